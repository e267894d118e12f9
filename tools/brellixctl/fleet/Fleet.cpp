#include "brellixctl/fleet/Fleet.h"

#include <chrono>
#include <utility>

#include "VorselKelpLinux/CurlURLSession.h"
#include "VorselKelpLinux/Runtime.h"

namespace brellixctl {

namespace platform = VorselKelp::platform;
namespace device = VorselKelp::linux_platform;

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// A phase in which nothing happens for so long is given up. Longer than any request's own time limit.
constexpr std::chrono::seconds longestSilence{90};

struct SilentConsole final : platform::Console {
  void print(std::string_view) override {}
};

/// Spreads a share evenly over steps: of every ten, say, always the same one opens.
bool chosen(std::size_t step, double share) {
  const auto upTo = [&](std::size_t steps) {
    return static_cast<std::size_t>(static_cast<double>(steps) * share);
  };
  return upTo(step + 1) > upTo(step);
}

}  // namespace

Fleet::Fleet(FleetPlan plan, FleetPayload payload, Watch watch)
    : plan_(std::move(plan)),
      payload_(std::move(payload)),
      watch_(std::move(watch)),
      loop_(std::make_shared<device::EventLoop>()),
      meter_(std::make_shared<RequestMeter>(
          device::makeURLSession(), plan_.connections,
          [this](const platform::URLRequest& request) { return payload_.kindOf(request); },
          [loop = loop_] { loop->wake(); })) {
  const auto& server = plan_.server;
  services_.endpoints = {server, server, server, server, server, server + "/articles/ad"};
  services_.session = meter_;
  services_.mainQueue = loop_;
  services_.clock = device::makeClock([] { return 0.0; });
  services_.random = device::makeRandom();
  services_.console = std::make_shared<SilentConsole>();
  services_.apiKey = "fleet";
}

/// Unanswered requests and waiting work know their devices.
Fleet::~Fleet() {
  meter_->close();
  loop_->discard();
  devices_.clear();
}

FleetPhase Fleet::launch() {
  devices_.reserve(plan_.devices);
  return run("Launches", plan_.devices, [this](std::size_t) {
    devices_.push_back(std::make_unique<FleetDevice>(services_));
    devices_.back()->launch();
  });
}

FleetPhase Fleet::campaign() {
  return run("Notifications", plan_.devices * plan_.pushes, [this](std::size_t step) { push(step); });
}

void Fleet::push(std::size_t step) {
  ++unfinished_;
  devices_[step % devices_.size()]->push(payload_.userInfo(),
                                         "campaign-" + std::to_string(step / devices_.size()),
                                         chosen(step, plan_.opened), [this] { --unfinished_; });
}

FleetPhase Fleet::run(const std::string& name, std::size_t steps,
                      const std::function<void(std::size_t)>& step) {
  FleetPhase phase{name, steps, 0, {}, true};
  (void)meter_->take();
  const auto start = Clock::now();
  std::size_t taken = 0;
  std::size_t answered = 0;
  auto lastAnswer = start;
  const auto finished = [&] {
    while (taken < steps && meter_->load() + unfinished_ < plan_.connections) step(taken++);
    if (const auto now = meter_->answered(); now != answered) {
      answered = now;
      lastAnswer = Clock::now();
    }
    watch_(name, taken - unfinished_, steps, answered);
    return taken == steps && unfinished_ == 0 && meter_->load() == 0;
  };
  while (!loop_->run(finished, Clock::now() + std::chrono::seconds(1))) {
    if (Clock::now() - lastAnswer < longestSilence) continue;
    phase.complete = false;
    break;
  }
  phase.seconds = Seconds(Clock::now() - start).count();
  phase.requests = meter_->take();
  return phase;
}

}  // namespace brellixctl
