#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "support/BareStore.h"

namespace VorselKelp::benchmarks {

/// What an earlier start has left.
inline void prepareBareStart(BareStore& store) {
  store.write("vs_session_num", "0");
  store.write("vs_uniq_session_id", "1763173483.0481937265");
}

/// The reads and writes of one start whose installation was not reported yet.
inline void bareStart(BareStore& store) {
  const std::string activity = "https://collection.vorsel.example/v2/activity?type=mobile";
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

}  // namespace VorselKelp::benchmarks
