#pragma once

#include <string>
#include <vector>

namespace VorselKelp::benchmarks {

/// Runs a program to its end, its output dropped, and answers its peak memory in KiB. A program that fails
/// ends the benchmark: a figure of something that does not work is none.
long runChild(const std::vector<std::string>& command);

}  // namespace VorselKelp::benchmarks
