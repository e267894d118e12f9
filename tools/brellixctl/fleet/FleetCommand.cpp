#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "VorselKelpLinux/NotificationRecords.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/fleet/FleetSummary.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

using collection_server::CollectionServer;

namespace {

/// A bar on standard error, drawn ten times a second at most, wiped at the end. Silent when nobody looks.
class Bar {
 public:
  ~Bar() { wipe(); }

  void show(const std::string& phase, std::size_t done, std::size_t all, std::size_t answered) {
    if (!visible_) return;
    const auto now = Clock::now();
    if (now - drawn_ < std::chrono::milliseconds(100)) return;
    drawn_ = now;
    constexpr std::size_t width = 30;
    const std::size_t full = all > 0 ? std::min(done * width / all, width) : width;
    std::fprintf(stderr, "\r\033[K%-14s [%s%s] %zu of %zu, %zu requests answered", phase.c_str(),
                 std::string(full, '#').c_str(), std::string(width - full, ' ').c_str(), done, all, answered);
  }
  void wipe() {
    if (visible_) std::fputs("\r\033[K", stderr);
  }

 private:
  using Clock = std::chrono::steady_clock;
  const bool visible_ = ::isatty(STDERR_FILENO) == 1;
  Clock::time_point drawn_{};
};

std::string failureIn(const std::vector<FleetPhase>& phases, const std::string& firstFailure) {
  const bool complete = std::ranges::all_of(phases, [](const auto& phase) { return phase.complete; });
  if (!firstFailure.empty()) return "Some requests failed, the first of them " + firstFailure;
  return complete ? "" : "The server stopped answering";
}

}  // namespace

int runFleet(const FleetRequest& request) {
  FleetPlan plan{request.devices, request.pushes, request.connections, request.opened / 100, request.server};
  std::unique_ptr<CollectionServer> own;
  if (plan.server.empty()) {
    auto started = CollectionServer::start({});
    if (!started) return fail(started.error());
    own = *std::move(started);
    plan.server = own->url();
  }
  while (plan.server.ends_with('/')) plan.server.pop_back();
  auto payload =
      request.payload.empty() ? FleetPayload::sample(plan.server) : FleetPayload::read(request.payload);
  if (!payload) return fail(payload.error());
  Bar bar;
  Fleet fleet(plan, *std::move(payload), [&](const auto& phase, auto done, auto all, auto answered) {
    bar.show(phase, done, all, answered);
  });
  std::vector<FleetPhase> phases;
  phases.push_back(fleet.launch());
  const auto& launches = phases.front();
  const bool reachable = launches.complete && failuresOf(launches) < launches.steps;
  if (reachable && plan.pushes > 0) phases.push_back(fleet.campaign());
  bar.wipe();
  return answer(toJSON(phases), inWords(phases), failureIn(phases, fleet.firstFailure()));
}

}  // namespace brellixctl
