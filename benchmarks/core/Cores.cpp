#include "support/Cores.h"

#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"
#include "kellp/Kellp.h"
#include "support/BenchmarkPlatform.h"

namespace VorselKelp::benchmarks {
namespace {

constexpr int coreCount = 1000;
constexpr int pushesPerCore = 1000;

/// A device and a process of its own for each core; requests and lines are dropped, so that nothing but the
/// core grows.
std::shared_ptr<platform::Platform> separatePlatform() {
  testing_platform::MemoryPlatform memory;
  auto services = std::make_shared<platform::Platform>(*memory.platform());
  makeQuiet(*services);
  return services;
}

void deliver(Kellp& kellp, const platform::UserInfo& payload, int number) {
  platform::NotificationRequest request;
  request.identifier = "n-" + std::to_string(number % 8);  // the stores stay small
  request.content.userInfo = payload;
  bool shown = false;
  kellp.serviceExtension->didReceive(request,
                                     std::make_shared<platform::NotificationContent>(request.content),
                                     [&shown](const auto&) { shown = true; });
  if (!shown) std::abort();
}

}  // namespace

Line coresSideBySide() {
  std::vector<std::shared_ptr<platform::Platform>> platforms;
  for (int i = 0; i < coreCount; ++i) platforms.push_back(separatePlatform());
  std::vector<std::shared_ptr<Kellp>> cores;
  cores.reserve(coreCount);
  const auto before = mallinfo2().uordblks;
  for (const auto& services : platforms) cores.push_back(std::make_shared<Kellp>(services));
  const auto bytes = static_cast<double>(mallinfo2().uordblks - before) / coreCount;

  for (const auto& core : cores) (void)configured(core->context, "");
  const auto payload = platform::UserInfo::fromJSON(textPush());
  const auto start = std::chrono::steady_clock::now();
  for (int push = 0; push < pushesPerCore; ++push) {
    for (const auto& core : cores) deliver(*core, payload, push);
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::printf("%d cores side by side: %.0f pushes per second, %.0f bytes per core\n", coreCount,
              coreCount * pushesPerCore / taken.count(), bytes);
  return {"one core's memory beside its store", "KB", bytes / 1024, 0, 64, Line::Goal::difference};
}

}  // namespace VorselKelp::benchmarks
