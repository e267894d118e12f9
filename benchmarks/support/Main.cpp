#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "content_ext/Figures.h"
#include "core/Figures.h"
#include "gif/Figures.h"
#include "screen/Figures.h"
#include "support/Cores.h"
#include "support/ProcessFigures.h"
#include "support/Table.h"

namespace {

using VorselKelp::benchmarks::Comparison;
using VorselKelp::benchmarks::Line;
using VorselKelp::benchmarks::Measured;

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
  /// Microseconds; absent when it did not run.
  [[nodiscard]] std::optional<Measured> measured(const std::string& name) const {
    const auto found = times_.find(name);
    if (found == times_.end()) return std::nullopt;
    auto times = found->second;
    for (double& time : times) time /= 1000;
    return Measured(std::move(times));
  }

 private:
  std::map<std::string, std::vector<double>> times_;
};

const std::array comparisons{
    Comparison{"initialize until it returns", "initialize, bare", 1.2},
    Comparison{"one text-only push of 2.2 KB, in process", "one text-only push, bare", 1.25},
    Comparison{"one more delivery, 100000 unopened stored", "one more delivery, 10 unopened stored", 1.2},
    Comparison{"service extension, spawn to exit", "bare extension, static", 2.5,
               "service extension, spawn to exit: bare program, static"},
    Comparison{"service extension, spawn to exit", "bare extension", 1.6,
               "the same: bare program of its own linkage"},
    Comparison{"Web Push message of 2.2 KB, encrypted", "Web Push message, bare OpenSSL", 1.25},
    Comparison{"service extension from a description", "bare extension, static", 2.5,
               "service extension from a description: bare program, static"},
    Comparison{"service extension from a description", "bare extension", 1.6,
               "the same: bare program of its own linkage"},
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
    const auto value = collector.measured(c.figure), floor = collector.measured(c.floor);
    if (value && floor) lines.push_back({c.title ? c.title : c.figure, "us", *value, *floor, c.goal});
  }
  lines.push_back(VorselKelp::benchmarks::serviceExtensionSystemCalls());
  lines.push_back(VorselKelp::benchmarks::firstInitialize());
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
