#include <utility>

#include "VorselKelpPosix/EventLoop.h"
#include "brellixctl/fleet/Fleet.h"

namespace brellixctl {

using gateway::MemoryDevices;
using VorselKelp::RemoteKind;

namespace {

constexpr std::chrono::milliseconds lookAgain{100};

}  // namespace

std::vector<std::string> Fleet::tokens() const {
  std::vector<std::string> tokens;
  tokens.reserve(devices_.size());
  for (const auto& device : devices_) tokens.push_back(device->token());
  return tokens;
}

FleetPhase Fleet::receive(MemoryDevices& incoming, const std::function<bool()>& interrupted) {
  using Clock = CampaignWatch::Clock;
  FleetPhase phase{"Campaign", 0, 0, {}, true, {}};
  (void)meter_->take();
  const auto watch = std::make_shared<CampaignWatch>();
  const auto expected = plan_.devices * plan_.pushes;
  bool over = false, quiet = true;
  std::size_t answered = 0;
  auto lastSign = Clock::now();
  const auto finished = [&] {
    while (!over && meter_->load() + unfinished_ < plan_.connections) {
      auto arrived = incoming.next();
      if (!arrived) break;
      take(*std::move(arrived), phase.steps++, watch);
    }
    const bool allCame = plan_.duration > 0 ? watch->secondsSinceFirst() >= plan_.duration
                                            : phase.steps + incoming.expired() >= expected;
    over = over || allCame || interrupted();
    quiet = unfinished_ == 0 && meter_->load() == 0;
    if (const auto now = meter_->answered(); quiet || now != answered) {
      answered = now;
      lastSign = Clock::now();
    }
    watch_(phase.name, phase.steps - unfinished_, expected, answered);
    return over && quiet;
  };
  while (!loop_->run(finished, Clock::now() + lookAgain)) {
    if (Clock::now() - lastSign < longestSilence) continue;
    phase.complete = false;
    break;
  }
  phase.seconds = watch->secondsToLast();
  phase.requests = meter_->take();
  phase.latencies = watch->latencies();
  return phase;
}

void Fleet::take(MemoryDevices::Arrived arrived, std::size_t step,
                 const std::shared_ptr<CampaignWatch>& watch) {
  watch->arrived(arrived.time);
  auto& device = *devices_[arrived.device];
  auto& notification = arrived.notification;
  const auto payload = incoming_.read(notification.payload);
  auto& identifier = notification.collapse.empty() ? notification.identifier : notification.collapse;
  if (payload->kind == RemoteKind::silent) return device.handOver(payload->unchanged.userInfo);
  if (payload->kind == RemoteKind::asItCame) {
    device.show({std::move(identifier), payload->unchanged, {}}, opens(step));
    return watch->shown(arrived.time);
  }
  ++unfinished_;
  device.push(
      payload->unchanged.userInfo, identifier, opens(step),
      [this, watch, time = arrived.time] {
        watch->shown(time);
        --unfinished_;
      },
      watchTrackers(meter_, payload, watch, arrived.time));
}

}  // namespace brellixctl
