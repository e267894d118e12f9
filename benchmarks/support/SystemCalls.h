#pragma once

#include <string>
#include <vector>

#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::benchmarks {

/// How many system calls `work` makes on its own thread. `prepare` runs before and is not counted. Both run
/// in a process of their own, so that nothing opened by this one is used twice.
[[nodiscard]] long systemCalls(platform::FunctionRef<void()> prepare, platform::FunctionRef<void()> work);

/// How many system calls a program makes from exec to exit, in all of its threads; its output is dropped.
[[nodiscard]] long systemCalls(const std::vector<std::string>& command);

}  // namespace VorselKelp::benchmarks
