#include "support/Table.h"

#include <algorithm>
#include <cstdio>

namespace VorselKelp::benchmarks {
namespace {

double at(const std::vector<double>& sorted, std::size_t quarter) {
  return sorted[(sorted.size() - 1) * quarter / 4];
}

void printGoal(const Line& line) {
  if (line.kind == Line::Goal::none) {
    std::printf(" x%8.2f         -\n", line.value.median / line.floor.median);
    return;
  }
  char sign = 'x';
  double distance = line.value.median / line.floor.median;
  if (line.kind == Line::Goal::difference) {
    sign = '+';
    distance = line.value.median - line.floor.median;
  } else if (line.kind == Line::Goal::value) {
    sign = ' ';
    distance = line.value.median;
  }
  std::printf(" %c%8.2f %c%8.2f %s\n", sign, distance, sign, line.goal,
              distance <= line.goal ? "met" : "MISSED");
}

void print(const Measured& measured, const std::string& unit) {
  char spread[32] = "";
  if (measured.low != measured.high)
    std::snprintf(spread, sizeof spread, "%.2f-%.2f", measured.low, measured.high);
  std::printf(" %9.2f %-2s %17s", measured.median, unit.c_str(), spread);
}

}  // namespace

Measured::Measured(std::vector<double> samples) : Measured(0.0) {
  if (samples.empty()) return;
  std::ranges::sort(samples);
  median = samples[samples.size() / 2];
  low = at(samples, 1);
  high = at(samples, 3);
}

void printTable(const std::vector<Line>& lines) {
  std::printf("%-58s %12s %17s %12s %17s %9s %9s\n", "figure", "value", "half within", "floor", "half within",
              "ratio", "goal");
  for (const Line& line : lines) {
    std::printf("%-58s", line.figure.c_str());
    print(line.value, line.unit);
    if (line.kind == Line::Goal::none && line.floor.median == 0) {
      std::putchar('\n');  // nothing to stand beside
      continue;
    }
    print(line.floor, line.unit);
    printGoal(line);
  }
}

}  // namespace VorselKelp::benchmarks
