// A process's first initialize, with the opening of its store: prints the nanoseconds from main to its
// return. first_initialize kelp FOLDER, or bare FOLDER for SQLite doing the same.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "VorselKelpPosix/CurlURLSession.h"
#include "core/BareStart.h"
#include "kellp/Kellp.h"
#include "support/BenchmarkPlatform.h"

namespace {

using namespace VorselKelp;
using namespace VorselKelp::benchmarks;
using Clock = std::chrono::steady_clock;

/// Ends the process as well: the request of the start is still on its way, and its thread loads libcurl.
[[noreturn]] void tell(Clock::duration duration) {
  const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count();
  std::printf("%lld\n", static_cast<long long>(nanoseconds));
  std::fflush(stdout);
  std::_Exit(0);
}

[[noreturn]] void kelp(const std::string& folder, Clock::time_point begin) {
  auto services = benchmarkPlatform(folder);
  services->urlSession = posix::makeURLSession();
  services->endpoints.tag = "http://127.0.0.1:1";
  const auto kellp = std::make_shared<Kellp>(std::move(services));
  kellp->initialize(configured(kellp->context));
  tell(Clock::now() - begin);
}

[[noreturn]] void bare(const std::string& folder, Clock::time_point begin) {
  const auto file = folder + "/bare.sqlite";
  if (!std::filesystem::exists(file)) {
    BareStore made(file);
    prepareBareStart(made);
  }
  BareStore store(file);
  store.begin();
  store.write("vs_analytics", "1");
  store.write("vs_push", "1");
  store.commit();
  bareStart(store);
  tell(Clock::now() - begin);
}

}  // namespace

int main(int argc, char** argv) {
  const auto begin = Clock::now();
  if (argc != 3) return 2;
  if (std::string_view(argv[1]) == "bare") bare(argv[2], begin);
  kelp(argv[2], begin);
}
