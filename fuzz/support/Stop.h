#pragma once

#include <optional>
#include <string>
#include <utility>

namespace fuzz {

/// Thrown where the library would stop its process.
struct Stop {
  std::string message;
};

/// Why `work` would have stopped the process; absent when it went through.
template <class Work>
std::optional<std::string> stopOf(Work&& work) {
  try {
    std::forward<Work>(work)();
  } catch (const Stop& stop) {
    return stop.message;
  }
  return std::nullopt;
}

}  // namespace fuzz
