#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process where something does not hold that always has to: the fuzzer keeps the input then.
#define FUZZ_EXPECT(condition)                                                            \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)
