#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "content_ext/Figures.h"
#include "core/Figures.h"
#include "gif/Figures.h"
#include "screen/Figures.h"
#include "support/Cores.h"
#include "support/ProcessMemory.h"
#include "support/Table.h"

namespace {

using VorselKelp::benchmarks::Comparison;
using VorselKelp::benchmarks::Line;

/// Keeps the time of every repetition by benchmark name.
class Collector final : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration)
        times_[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
    }
    std::fputc('.', stderr);
  }
  /// Microseconds.
  double median(const std::string& name) {
    auto& times = times_[name];
    if (times.empty()) return 0;
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::ranges::nth_element(times, middle);
    return *middle / 1000;
  }

 private:
  std::map<std::string, std::vector<double>> times_;
};

const std::array comparisons{
    Comparison{"initialize until it returns", "initialize, bare", 1.3},
    Comparison{"one text-only push of 2.2 KB, in process", "one text-only push, bare", 1.5},
    Comparison{"one more delivery, 100000 unopened stored", "one more delivery, 10 unopened stored", 1.2},
    Comparison{"service extension, spawn to exit", "service extension, bare", 1.5},
    Comparison{"GIF 400 x 300, 200 frames: time per composed flat frame", "GIF, bare giflib", 1.5},
};

}  // namespace

int main(int argc, char** argv) {
  // Repetitions of figure and floor are mixed, so that a slow moment of the machine falls on both.
  std::vector<std::string> options(argv, argv + argc);
  options.insert(options.begin() + 1, {"--benchmark_enable_random_interleaving=true",
                                       "--benchmark_repetitions=9", "--benchmark_min_time=0.15"});
  std::vector<char*> arguments;
  for (std::string& option : options) arguments.push_back(option.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  Collector collector;
  benchmark::RunSpecifiedBenchmarks(&collector);
  std::fputc('\n', stderr);
  std::vector<Line> lines;
  for (const Comparison& c : comparisons) {
    const double value = collector.median(c.figure), floor = collector.median(c.floor);
    if (value > 0 && floor > 0) lines.push_back({c.figure, "us", value, floor, c.goal});  // else filtered out
  }
  lines.push_back(VorselKelp::benchmarks::initializeTail());
  lines.push_back(VorselKelp::benchmarks::firstInitializeSystemCalls());
  lines.push_back(VorselKelp::benchmarks::initializeSystemCalls());
  lines.push_back(VorselKelp::benchmarks::librarySize());
  lines.push_back(VorselKelp::benchmarks::serviceExtensionMemory());
  lines.push_back(VorselKelp::benchmarks::serviceExtensionImageMemory());
  lines.push_back(VorselKelp::benchmarks::gifMemory());
  lines.push_back(VorselKelp::benchmarks::carouselPaging());
#ifdef BENCHMARK_SCREENS
  if (auto line = VorselKelp::benchmarks::promptMessage()) {
    lines.push_back(*std::move(line));
  } else {
    std::fputs("There is no display: the permission page is not measured\n", stderr);
  }
#endif
  lines.push_back(VorselKelp::benchmarks::coresSideBySide());
  VorselKelp::benchmarks::printTable(lines);
  benchmark::Shutdown();
  return 0;
}
