#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpLinux/EventLoop.h"
#include "brellixctl/fleet/FleetDevice.h"
#include "brellixctl/fleet/FleetPayload.h"
#include "brellixctl/fleet/RequestMeter.h"

namespace brellixctl {

struct FleetPlan {
  std::size_t devices = 0;
  std::size_t pushes = 0;  ///< each device's
  std::size_t connections = 0;
  double opened = 0;  ///< the share of notifications that are opened, 0 to 1
  std::string server;
};

/// What one phase of a fleet's life came to.
struct FleetPhase {
  std::string name;
  std::size_t steps = 0;  ///< launches or notifications
  double seconds = 0;
  RequestMeter::Figures requests;
  bool complete = true;  ///< false: given up after a long time without any answer
};

/// Many devices in one process, whose requests go to one real server. Main thread.
class Fleet {
 public:
  /// How far a phase is: steps done, steps in all, requests answered.
  using Watch =
      std::function<void(const std::string& phase, std::size_t done, std::size_t all, std::size_t answered)>;

  Fleet(FleetPlan plan, FleetPayload payload, Watch watch);
  ~Fleet();

  /// Starts all applications.
  FleetPhase launch();
  /// Delivers the campaign.
  FleetPhase campaign();
  [[nodiscard]] std::string firstFailure() const { return meter_->firstFailure(); }

 private:
  /// Takes `steps` steps, never far more than the server keeps up with, and waits for all answers.
  FleetPhase run(const std::string& name, std::size_t steps, const std::function<void(std::size_t)>& step);
  void push(std::size_t step);

  const FleetPlan plan_;
  const FleetPayload payload_;
  const Watch watch_;
  const std::shared_ptr<VorselKelp::linux_platform::EventLoop> loop_;
  std::shared_ptr<RequestMeter> meter_;
  FleetServices services_;
  std::vector<std::unique_ptr<FleetDevice>> devices_;
  std::size_t unfinished_ = 0;  ///< notifications whose extension has not answered
};

}  // namespace brellixctl
