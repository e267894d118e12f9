#include "support/Table.h"

#include <cstdio>

namespace VorselKelp::benchmarks {
namespace {

void printGoal(const Line& line) {
  if (line.kind == Line::Goal::none) {
    std::printf(" x%9.2f          -\n", line.value / line.floor);
    return;
  }
  const bool difference = line.kind == Line::Goal::difference;
  const double distance = difference ? line.value - line.floor : line.value / line.floor;
  const char sign = difference ? '+' : 'x';
  std::printf(" %c%9.2f %c%9.2f %s\n", sign, distance, sign, line.goal,
              distance <= line.goal ? "met" : "MISSED");
}

}  // namespace

void printTable(const std::vector<Line>& lines) {
  std::printf("%-58s %12s %12s %10s %10s\n", "figure", "value", "floor", "ratio", "goal");
  for (const Line& line : lines) {
    std::printf("%-58s %9.2f %-2s %9.2f %-2s", line.figure.c_str(), line.value, line.unit.c_str(), line.floor,
                line.unit.c_str());
    printGoal(line);
  }
}

}  // namespace VorselKelp::benchmarks
