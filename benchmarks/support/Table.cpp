#include "support/Table.h"

#include <cstdio>

namespace VorselKelp::benchmarks {

void printTable(const std::vector<Line>& lines) {
  std::printf("%-58s %12s %12s %10s %10s\n", "figure", "value", "floor", "ratio", "goal");
  for (const Line& line : lines) {
    const double ratio = line.goalIsDifference ? line.value - line.floor : line.value / line.floor;
    const char* sign = line.goalIsDifference ? "+" : "x";
    std::printf("%-58s %9.2f %-2s %9.2f %-2s %s%9.2f %s%9.2f %s\n", line.figure.c_str(), line.value,
                line.unit.c_str(), line.floor, line.unit.c_str(), sign, ratio, sign, line.goal,
                ratio <= line.goal ? "met" : "MISSED");
  }
}

}  // namespace VorselKelp::benchmarks
