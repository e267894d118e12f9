#pragma once

#include <memory>
#include <mutex>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Clock.h"

namespace VorselKelp::testing_platform {

/// A clock that stands still until it is moved. All processes of a MemoryDevice share one, so a minute that
/// passes passes for all of them. Thread-safe.
///
/// It shows two times: the wall clock of now(), which setNow() lets jump as a user does who sets the date,
/// and the uptime, which only advance() moves and by which timers and semaphores run.
///
/// A semaphore's wait() never blocks the thread: with a signal to take, it takes it; with none, the time it
/// would have waited passes at once (the uptime moves to the deadline) and it returns false. So an answer
/// that a test holds back is "too late" without a second being lost. A signal from another thread therefore
/// has to come before the wait, or it counts as late. Timers that fall due in that time run when their queue
/// is next run.
class VORSELKELP_API ManualClock final : public platform::Clock,
                                         public std::enable_shared_from_this<ManualClock> {
 public:
  /// 2026-11-15 02:24:43 UTC, unless told otherwise.
  explicit ManualClock(double now = 1794709483.0) : now_(now) {}

  double now() override;
  std::shared_ptr<platform::Semaphore> makeSemaphore() override;

  /// Seconds since the clock was made, jumps of the wall clock left out.
  [[nodiscard]] double uptime() const;
  /// Lets `seconds` pass; negative ones are ignored. Runs no timers: see MemoryDevice::advance.
  void advance(double seconds);
  void setNow(double now);

 private:
  mutable std::mutex mutex_;
  double now_;
  double uptime_ = 0;
};

}  // namespace VorselKelp::testing_platform
