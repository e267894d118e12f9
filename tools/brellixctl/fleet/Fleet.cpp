#include "brellixctl/fleet/Fleet.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpPosix/Services.h"

namespace brellixctl {

namespace platform = VorselKelp::platform;

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

struct SilentConsole final : platform::Console {
  void print(std::string_view) override {}
};

/// When a phase's steps may be taken.
class Pace {
 public:
  /// `rate`: steps a second, 0 for any number. `duration`: seconds, 0 for any time.
  Pace(double rate, std::size_t steps, double duration) : rate_(rate), steps_(steps), duration_(duration) {}

  [[nodiscard]] bool isOver(std::size_t taken) const {
    return duration_ > 0 ? seconds() >= duration_ : taken == steps_;
  }
  [[nodiscard]] bool isDue(std::size_t taken) const {
    return !isOver(taken) && (rate_ == 0 || static_cast<double>(taken) < seconds() * rate_ + 1);
  }
  /// When to look again whether a step is due.
  [[nodiscard]] Clock::time_point next(std::size_t taken) const {
    const double due = rate_ > 0 && !isDue(taken) && !isOver(taken) ? static_cast<double>(taken) / rate_ : 0;
    return due > 0 ? start_ + std::chrono::duration_cast<Clock::duration>(Seconds(due))
                   : Clock::now() + std::chrono::seconds(1);
  }
  /// How many steps there will have been, as far as can be told.
  [[nodiscard]] std::size_t expected(std::size_t taken) const {
    if (duration_ == 0) return steps_;
    const double passed = std::clamp(seconds(), 1e-3, duration_);
    return static_cast<std::size_t>(static_cast<double>(taken) * duration_ / passed);
  }
  [[nodiscard]] double seconds() const { return Seconds(Clock::now() - start_).count(); }

 private:
  const double rate_;
  const std::size_t steps_;
  const double duration_;
  const Clock::time_point start_ = Clock::now();
};

}  // namespace

Fleet::Fleet(FleetPlan plan, std::vector<FleetPayload> payloads, Watch watch)
    : plan_(std::move(plan)),
      payloads_(std::move(payloads)),
      watch_(std::move(watch)),
      loop_(std::make_shared<VorselKelp::posix::EventLoop>()) {
  VorselKelp::posix::URLSessionOptions options;
  options.followRedirects = plan_.anywhere;
  auto session = VorselKelp::posix::makeURLSession(std::move(options));
  if (!plan_.anywhere) session = fence_ = std::make_shared<ServerFence>(std::move(session), plan_.server);
  meter_ = std::make_shared<RequestMeter>(
      std::move(session), plan_.connections,
      [this](const platform::URLRequest& request) {
        auto kind = incoming_.kindOf(request.url);
        return kind.empty() ? kindOf(request, payloads_) : kind;
      },
      [loop = loop_] { loop->wake(); });
  const auto& server = plan_.server;
  services_.endpoints = {server, server, server, server, server, server + "/articles/ad"};
  services_.session = meter_;
  services_.mainQueue = loop_;
  services_.clock = VorselKelp::posix::makeClock();
  services_.random = VorselKelp::posix::makeRandom();
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
  return run("Launches", {plan_.devices, 0, [this](std::size_t step) {
                            devices_.push_back(std::make_unique<FleetDevice>(services_, step));
                            devices_.back()->launch();
                          }});
}

FleetPhase Fleet::campaign() {
  return run("Notifications",
             {plan_.devices * plan_.pushes, plan_.duration, [this](std::size_t step) { push(step); }});
}

ServerFence::Counts Fleet::turned() const {
  return fence_ ? fence_->turned() : ServerFence::Counts();
}

/// Spreads the share evenly: of every ten, say, always the same one is opened.
bool Fleet::opens(std::size_t step) const {
  const auto upTo = [&](std::size_t steps) {
    return static_cast<std::size_t>(static_cast<double>(steps) * plan_.opened);
  };
  return upTo(step + 1) > upTo(step);
}

void Fleet::push(std::size_t step) {
  ++unfinished_;
  devices_[step % devices_.size()]->push(payloads_[step % payloads_.size()].userInfo(),
                                         "campaign-" + std::to_string(step / devices_.size()), opens(step),
                                         [this] { --unfinished_; });
}

FleetPhase Fleet::run(const std::string& name, const Steps& steps) {
  FleetPhase phase{name, 0, 0, {}, true};
  (void)meter_->take();
  const Pace pace(plan_.rate, steps.count, steps.duration);
  auto& taken = phase.steps;
  std::size_t answered = 0;
  auto lastSign = Clock::now();
  const auto finished = [&] {
    while (pace.isDue(taken) && meter_->load() + unfinished_ < plan_.connections) steps.take(taken++);
    const bool quiet = unfinished_ == 0 && meter_->load() == 0;
    if (const auto now = meter_->answered(); quiet || now != answered) {
      answered = now;
      lastSign = Clock::now();
    }
    watch_(name, taken - unfinished_, pace.expected(taken), answered);
    return quiet && pace.isOver(taken);
  };
  while (!loop_->run(finished, pace.next(taken))) {
    if (Clock::now() - lastSign < longestSilence) continue;
    phase.complete = false;
    break;
  }
  phase.seconds = pace.seconds();
  phase.requests = meter_->take();
  return phase;
}

}  // namespace brellixctl
