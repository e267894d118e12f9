#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpPosix/EventLoop.h"
#include "brellixctl/fleet/CampaignWatch.h"
#include "brellixctl/fleet/FleetDevice.h"
#include "brellixctl/fleet/FleetPayload.h"
#include "brellixctl/fleet/IncomingPayload.h"
#include "brellixctl/fleet/RequestMeter.h"
#include "brellixctl/fleet/ServerFence.h"
#include "gateway/devices/MemoryDevices.h"

namespace brellixctl {

struct FleetPlan {
  std::size_t devices = 0;
  std::size_t pushes = 0;  ///< each device's, unless a duration is set
  std::size_t connections = 0;
  double opened = 0;  ///< the share of notifications that are opened, 0 to 1
  double rate = 0;    ///< launches and notifications a second at most; 0: as many as the server keeps up with
  double duration = 0;  ///< seconds that notifications go on for; 0: until each device has its own
  std::string server;
  bool anywhere = false;  ///< requests go where payloads and answers say, and not to the server alone
};

/// What one phase of a fleet's life came to.
struct FleetPhase {
  std::string name;
  std::size_t steps = 0;  ///< launches or notifications
  double seconds = 0;
  RequestMeter::Figures requests;
  bool complete = true;                  ///< false: given up after a long time without any answer
  CampaignWatch::Latencies latencies{};  ///< of what came through a gateway
};

/// A phase in which nothing happens for so long is given up. Longer than any request's own time limit.
inline constexpr std::chrono::seconds longestSilence{90};

/// Many devices in one process, whose requests go to one real server. Main thread.
class Fleet {
 public:
  /// How far a phase is: steps done, steps in all, requests answered.
  using Watch =
      std::function<void(const std::string& phase, std::size_t done, std::size_t all, std::size_t answered)>;

  /// Devices get the payloads in turn; there is one at least.
  Fleet(FleetPlan plan, std::vector<FleetPayload> payloads, Watch watch);
  ~Fleet();

  /// Starts all applications.
  FleetPhase launch();
  /// Delivers the campaign.
  FleetPhase campaign();
  /// The devices' tokens, by their numbers.
  [[nodiscard]] std::vector<std::string> tokens() const;
  /// Something came in. Any thread.
  void wake() { loop_->wake(); }
  /// Delivers what comes in, until each device has had its pushes, the plan's duration has passed since the
  /// first one, or `interrupted` says so; then waits for all answers.
  FleetPhase receive(gateway::MemoryDevices& incoming, const std::function<bool()>& interrupted);
  /// Requests that were meant for other servers.
  [[nodiscard]] ServerFence::Counts turned() const;

 private:
  /// What a phase is made of.
  struct Steps {
    std::size_t count = 0;
    double duration = 0;  ///< seconds; 0: until all are taken
    std::function<void(std::size_t)> take;
  };
  /// Whether `step` is one of those that are opened.
  [[nodiscard]] bool opens(std::size_t step) const;
  /// Takes the steps, never far more than the server keeps up with, and waits for all answers.
  FleetPhase run(const std::string& name, const Steps& steps);
  void push(std::size_t step);
  void take(gateway::MemoryDevices::Arrived arrived, std::size_t step,
            const std::shared_ptr<CampaignWatch>& watch);

  const FleetPlan plan_;
  const std::vector<FleetPayload> payloads_;
  const Watch watch_;
  const std::shared_ptr<VorselKelp::posix::EventLoop> loop_;
  std::shared_ptr<ServerFence> fence_;  ///< null when requests may go anywhere
  std::shared_ptr<RequestMeter> meter_;
  FleetServices services_;
  std::vector<std::unique_ptr<FleetDevice>> devices_;
  IncomingPayloads incoming_;
  std::size_t unfinished_ = 0;  ///< notifications whose extension has not answered
};

}  // namespace brellixctl
