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
  /// What `goal` bounds: how many times the floor the value may be, or how much more than it. `none`: the
  /// figure is only told.
  enum class Goal { ratio, difference, none };
  double goal = 0;
  Goal kind = Goal::ratio;
};

/// What a benchmark is compared with: both are benchmarks of this program, by name.
struct Comparison {
  std::string figure;
  std::string floor;
  double goal;
};

void printTable(const std::vector<Line>& lines);

}  // namespace VorselKelp::benchmarks
