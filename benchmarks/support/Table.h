#pragma once

#include <string>
#include <vector>

namespace VorselKelp::benchmarks {

/// What several measurements of one figure gave: the median, and the range that half of them lie in. A single
/// number is a measurement that always gives the same.
struct Measured {
  Measured(double single) : median(single), low(single), high(single) {}  // NOLINT: numbers are measurements
  explicit Measured(std::vector<double> samples);

  double median, low, high;
};

/// One line of the table: what is measured, in the unit that it is printed in, beside the floor that was
/// measured in the same run.
struct Line {
  std::string figure;
  std::string unit;
  Measured value = 0;
  Measured floor = 0;
  /// What `goal` bounds: how many times the floor the value may be, how much more than it, or the value
  /// itself. `none`: the figure is only told.
  enum class Goal { ratio, difference, value, none };
  double goal = 0;
  Goal kind = Goal::ratio;
};

/// What a benchmark is compared with: both are benchmarks of this program, by name. `title`, where there is
/// one, is what the table calls the comparison.
struct Comparison {
  const char* figure;
  const char* floor;
  double goal;
  const char* title = nullptr;
};

void printTable(const std::vector<Line>& lines);

}  // namespace VorselKelp::benchmarks
