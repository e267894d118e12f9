#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "VorselKelp/Result.h"
#include "gateway/Notification.h"
#include "phone/Target.h"

namespace gateway {

/// One application on one simulated device. Its deliveries have a thread of their own, for an extension may
/// take its time; it begins with what an earlier process has left in the home.
class DeskApplication {
 public:
  explicit DeskApplication(const phone::Target& target);
  /// Ends the delivery under way.
  ~DeskApplication() = default;

  /// Keeps the notification in the home. Nothing when the token is none of its own; an error when the home is
  /// of no use. One thread at a time.
  VorselKelp::Result<std::optional<Answer>> take(const Notification& notification);

 private:
  [[nodiscard]] Answer keep(const Notification& notification);
  void work(const std::stop_token& stop);

  const phone::Target target_;
  VorselKelp::simulator::SimulatedDevice device_;
  VorselKelp::simulator::Arrivals arrivals_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  bool arrived_ = true;  ///< something may lie in the home
  std::jthread worker_;
};

}  // namespace gateway
