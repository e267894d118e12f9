#pragma once

#include <string>
#include <vector>

namespace VorselKelp::benchmarks {

/// Runs a program to its end, its output dropped and `input`, a file, as its standard input where there is
/// one. A program that fails ends the benchmark: a figure of something that does not work is none.
void runChild(const std::vector<std::string>& command, const std::string& input = "");

/// The same, and answers the one number that the program prints.
long long printedNumber(const std::vector<std::string>& command);

/// Answers the program's peak memory in KiB.
long long peakMemory(std::vector<std::string> command);

}  // namespace VorselKelp::benchmarks
