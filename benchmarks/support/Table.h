#pragma once

#include <map>
#include <string>
#include <vector>

namespace VorselKelp::benchmarks {

/// One line of the table: what is measured, in the unit that it is printed in, beside the floor that was
/// measured in the same run.
struct Line {
  std::string figure;
  std::string unit;
  double value = 0;
  double floor = 0;
  /// The goal: `value` at most `goal` times the floor, or at most `goal` more than it.
  double goal = 0;
  bool goalIsDifference = false;
};

/// What a benchmark is compared with: both are benchmarks of this program, by name.
struct Comparison {
  std::string figure;
  std::string floor;
  double goal;
};

void printTable(const std::vector<Line>& lines);

}  // namespace VorselKelp::benchmarks
