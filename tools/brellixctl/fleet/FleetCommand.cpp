#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>

#include "VorselKelpPosix/Hex.h"
#include "brellixctl/Commands.h"
#include "brellixctl/EndingSignals.h"
#include "brellixctl/ServerAddress.h"
#include "brellixctl/fleet/FleetSummary.h"
#include "brellixctl/gateway/ServingGateway.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::Error;
using VorselKelp::Result;
using VorselKelp::Status;

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

Result<std::vector<FleetPayload>> readPayloads(const FleetRequest& request, const std::string& server) {
  std::vector<FleetPayload> payloads;
  for (const auto& path : request.payloads) {
    auto payload = FleetPayload::read(path);
    if (!payload) return payload.error();
    payloads.push_back(*std::move(payload));
  }
  if (payloads.empty()) payloads.push_back(FleetPayload::sample(server));
  return payloads;
}

Status writeTokens(const std::vector<std::string>& tokens, const std::string& path) {
  std::ofstream file(path, std::ios::trunc);
  for (const auto& token : tokens) file << VorselKelp::posix::hexOf(token) << '\n';
  if (file.close(); !file) return Error{"Cannot write the tokens to " + path};
  return VorselKelp::Done{};
}

/// Takes what the publisher's server sends, until all of it came or the user ends it.
Result<FleetPhase> receive(Fleet& fleet, const CommonOptions& common, const FleetRequest& request) {
  GatewayRequest wanted;
  wanted.port = request.port;
  wanted.open = request.open;
  const auto devices =
      std::make_shared<gateway::MemoryDevices>(fleet.tokens(), "", [&fleet] { fleet.wake(); });
  const auto serving = ServingGateway::start(wanted, {devices});
  if (!serving) return serving.error();
  const EndingNote note;
  (*serving)->introduce(common.json);
  if (!common.json) {
    std::printf("\n%zu devices wait for notifications%s%s; Ctrl-C tells what came so far\n", request.devices,
                request.tokens.empty() ? "" : ", with the tokens in ", request.tokens.c_str());
    std::fflush(stdout);
  }
  return fleet.receive(*devices, &EndingNote::came);
}

}  // namespace

int runFleet(const CommonOptions& common, const FleetRequest& request) {
  FleetPlan plan{request.devices, request.pushes,   request.connections, request.opened / 100,
                 request.rate,    request.duration, request.server,      request.anywhere};
  std::unique_ptr<CollectionServer> own;
  if (plan.server.empty()) {
    auto started = CollectionServer::start({});
    if (!started) return fail(started.error());
    own = *std::move(started);
    plan.server = own->url();
  }
  while (plan.server.ends_with('/')) plan.server.pop_back();
  if (!isServerAddress(plan.server)) {
    return fail(
        Error{"--server takes scheme, host and port, such as https://collect.your.domain or "
              "http://127.0.0.1:8080, not \"" +
                  request.server + "\"",
              wrongUsage});
  }
  auto payloads = readPayloads(request, plan.server);
  if (!payloads) return fail(payloads.error());
  Bar bar;
  Fleet fleet(plan, *std::move(payloads), [&](const auto& phase, auto done, auto all, auto answered) {
    bar.show(phase, done, all, answered);
  });
  FleetSummary summary{{fleet.launch()}, plan.server, {}};
  const auto& launches = summary.phases.front();
  const bool reachable = launches.complete && anySuccess(launches);
  if (!request.tokens.empty()) {
    if (const auto status = writeTokens(fleet.tokens(), request.tokens); !status) return fail(status.error());
  }
  if (reachable && request.gateway) {
    bar.wipe();
    auto campaign = receive(fleet, common, request);
    if (!campaign) return fail(campaign.error());
    summary.phases.push_back(*std::move(campaign));
  } else if (reachable && (plan.pushes > 0 || plan.duration > 0)) {
    summary.phases.push_back(fleet.campaign());
  }
  bar.wipe();
  summary.turned = fleet.turned();
  return answer(toJSON(summary), inWords(summary), failureIn(summary, request.failAbove));
}

}  // namespace brellixctl
