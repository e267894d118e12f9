#include <benchmark/benchmark.h>

#include "VorselKelp/VorselBuilder.h"
#include "kellp/Kellp.h"
#include "support/BareStore.h"
#include "support/BenchmarkPlatform.h"

namespace VorselKelp::benchmarks {
namespace {

void initialize(benchmark::State& state) {
  const TemporaryFolder folder;
  const auto kellp = std::make_shared<Kellp>(benchmarkPlatform(folder.path));
  const auto config = VorselBuilder(kellp->context, "k-123", benchmarkGroup).push().build();
  kellp->initialize(config);  // makes the installation's id
  for (auto _ : state) kellp->initialize(config);
}

/// The reads and writes of one start whose installation was not reported yet.
void bareInitialize(benchmark::State& state) {
  const TemporaryFolder folder;
  BareStore store(folder.path + "/bare.sqlite");
  const std::string activity = "https://collection.vorsel.example/v2/activity?type=mobile";
  store.write("vs_session_num", "0");
  store.write("vs_uniq_session_id", "1763173483.0481937265");
  for (auto _ : state) {
    store.begin();
    const int sessions = std::stoi(store.read("vs_session_num")) + 1;
    store.write("vs_session_num", std::to_string(sessions));
    store.write("vs_session_id", "1763173483");
    store.write("vs_visitedPCount", "0");
    benchmark::DoNotOptimize(store.read("vs_uniq_session_id"));
    benchmark::DoNotOptimize(store.read("vs_reg"));
    store.write("vs_activity_url", activity);
    store.write("vs_user_url", activity);
    store.write("vs_crash", activity);
    store.write("vs_config_url", activity);
    store.commit();
    benchmark::DoNotOptimize(store.read("vs_config_url"));
    benchmark::DoNotOptimize(store.read("vs_last_modified"));
  }
}

BENCHMARK(initialize)->Name("initialize until it returns");
BENCHMARK(bareInitialize)->Name("initialize, bare");

}  // namespace
}  // namespace VorselKelp::benchmarks
