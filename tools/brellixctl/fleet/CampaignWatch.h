#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VorselKelp/platform/URLSession.h"
#include "brellixctl/fleet/IncomingPayload.h"

namespace brellixctl {

/// When what came through a gateway arrived and was shown, and when its trackers were answered. Any thread.
class CampaignWatch {
 public:
  using Clock = std::chrono::steady_clock;
  /// By name, in milliseconds: "arrival" since the campaign's first request, "delivery" and "tracker" since
  /// the notification's own.
  using Latencies = std::map<std::string, std::vector<float>>;

  void arrived(Clock::time_point time);
  void shown(Clock::time_point arrival);
  void tracked(Clock::time_point arrival);

  /// From the first request until now, and until the last thing that happened. 0 before the first one.
  [[nodiscard]] double secondsSinceFirst() const;
  [[nodiscard]] double secondsToLast() const;
  [[nodiscard]] Latencies latencies() const;

 private:
  void note(const char* name, Clock::time_point since);

  mutable std::mutex mutex_;
  Clock::time_point first_ = Clock::time_point::max();
  Clock::time_point last_ = Clock::time_point::min();
  Latencies latencies_{{"arrival", {}}, {"delivery", {}}, {"tracker", {}}};
};

/// The session of one notification's extension: `session`, and the watch learns when a view or impression
/// tracker of the payload was answered.
std::shared_ptr<VorselKelp::platform::URLSession> watchTrackers(
    std::shared_ptr<VorselKelp::platform::URLSession> session, std::shared_ptr<const IncomingPayload> payload,
    std::shared_ptr<CampaignWatch> watch, CampaignWatch::Clock::time_point arrival);

}  // namespace brellixctl
