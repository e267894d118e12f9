#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpTesting/ManualClock.h"

namespace VorselKelp::testing_platform {

/// A main queue that runs when the test says so, on the thread that says it: that thread is the main thread
/// for as long. Appending is allowed from any thread, running from one at a time.
class VORSELKELP_API ManualMainQueue final : public platform::MainQueue {
 public:
  explicit ManualMainQueue(std::shared_ptr<ManualClock> clock) : clock_(std::move(clock)) {}

  void async(platform::UniqueFunction<void()> work) override { asyncAfter(0, std::move(work)); }
  void asyncAfter(double seconds, platform::UniqueFunction<void()> work) override;

  /// Runs one work item that is due; false when there is none.
  bool runOne();
  /// Runs everything that is due, and what that appends, until nothing due is left. Returns how many items
  /// ran.
  std::size_t runUntilIdle();

  /// Drops everything that waits, unrun.
  void drop();

  /// Items that wait, due or not.
  [[nodiscard]] std::size_t waiting() const;
  /// The uptime at which the next item is due; it may lie in the past. Absent when nothing waits.
  [[nodiscard]] std::optional<double> nextDue() const;

 private:
  using Order = std::pair<double, std::uint64_t>;  // due, then the order of appending

  std::shared_ptr<ManualClock> clock_;
  mutable std::mutex mutex_;
  std::uint64_t appended_ = 0;
  std::map<Order, platform::UniqueFunction<void()>> items_;
};

}  // namespace VorselKelp::testing_platform
