#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "VorselKelpPosix/CurlURLSession.h"
#include "core/BareStart.h"
#include "core/Figures.h"
#include "kellp/Kellp.h"
#include "support/BareStore.h"
#include "support/BenchmarkPlatform.h"
#include "support/ChildProcess.h"
#include "support/SystemCalls.h"

namespace VorselKelp::benchmarks {
namespace {

/// A core that has been started once, which made the installation's id.
struct StartedCore {
  TemporaryFolder folder;
  std::shared_ptr<Kellp> kellp = std::make_shared<Kellp>(benchmarkPlatform(folder.path));
  std::shared_ptr<VorselConfig> config = configured(kellp->context);

  StartedCore() { start(); }
  void start() { kellp->initialize(config); }
};

/// The reads and writes of one start in a store of its own.
struct BareCore {
  TemporaryFolder folder;
  BareStore store{folder.path + "/bare.sqlite"};

  BareCore() { prepareBareStart(store); }
  void start() { bareStart(store); }
};

template <class Start>
void starts(benchmark::State& state) {
  Start start;
  for (auto _ : state) start.start();
}

/// Microseconds.
template <class Start>
void timeOne(Start& start, std::vector<double>& times) {
  const auto before = std::chrono::steady_clock::now();
  start.start();
  times.push_back(
      std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - before).count());
}

double percentile99(std::vector<double>& times) {
  const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
  std::ranges::nth_element(times, place);
  return *place;
}

/// A process before its first `initialize`: a session that has sent nothing yet, for servers that nobody
/// runs.
struct FreshCore {
  TemporaryFolder folder;
  std::shared_ptr<Kellp> kellp = std::make_shared<Kellp>(networkPlatform(folder.path));
  std::shared_ptr<VorselConfig> config = configured(kellp->context);

  void start() { kellp->initialize(config); }

 private:
  static std::shared_ptr<platform::Platform> networkPlatform(const std::string& folder) {
    auto services = benchmarkPlatform(folder);
    services->urlSession = posix::makeURLSession();
    services->endpoints.tag = "http://127.0.0.1:1";
    return services;
  }
};

template <class Start>
double callsOfOneStart(bool first) {
  std::unique_ptr<Start> start;
  const auto prepare = [&] {
    start = std::make_unique<Start>();
    if (!first) start->start();
  };
  return static_cast<double>(systemCalls(prepare, [&] { start->start(); }));
}

/// Microseconds from main to initialize's return, in processes of their own.
Measured firstStarts(const TemporaryFolder& folder, const char* kind) {
  constexpr int runs = 101;
  std::vector<double> times;
  for (int i = 0; i < runs; ++i)
    times.push_back(static_cast<double>(printedNumber({FIRST_INITIALIZE, kind, folder.path})) / 1000);
  return Measured(std::move(times));
}

BENCHMARK(starts<StartedCore>)->Name("initialize until it returns");
BENCHMARK(starts<BareCore>)->Name("initialize, bare");

}  // namespace

Line initializeTail() {
  constexpr int rounds = 20000;
  StartedCore core;
  BareCore bare;
  std::vector<double> coreTimes;
  std::vector<double> bareTimes;
  for (int i = 0; i < rounds; ++i) {
    timeOne(core, coreTimes);
    timeOne(bare, bareTimes);
  }
  return {"initialize, 99th percentile", "us", percentile99(coreTimes),
          percentile99(bareTimes),       0,    Line::Goal::none};
}

Line firstInitialize() {
  const TemporaryFolder folder;
  for (const char* kind : {"kelp", "bare"}) printedNumber({FIRST_INITIALIZE, kind, folder.path});  // makes it
  return {"the first initialize of a process, from main on", "us", firstStarts(folder, "kelp"),
          firstStarts(folder, "bare"), 1.3};
}

Line firstInitializeSystemCalls() {
  return {"the first initialize of a process, system calls",
          "",
          callsOfOneStart<FreshCore>(true),
          callsOfOneStart<BareCore>(false),
          10,
          Line::Goal::difference};
}

Line initializeSystemCalls() {
  return {"a later initialize, system calls", "", callsOfOneStart<FreshCore>(false),
          callsOfOneStart<BareCore>(false),   10, Line::Goal::difference};
}

Line librarySize() {
  const auto bytes = static_cast<double>(std::filesystem::file_size(STRIPPED_LIBRARY));
  return {"core and facade, stripped", "MB", bytes / 1e6, 0, 1, Line::Goal::difference};
}

}  // namespace VorselKelp::benchmarks
