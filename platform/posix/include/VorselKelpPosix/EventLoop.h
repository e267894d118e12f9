#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::posix {

/// Waits for a loop that shares its thread with a toolkit.
class LoopWaiter {
 public:
  virtual ~LoopWaiter() = default;
  /// Does the toolkit's work until `until`, and returns early after wake() or whenever it likes. On the
  /// loop's thread.
  virtual void wait(std::chrono::steady_clock::time_point until) = 0;
  /// Ends the wait under way, or the next one. Any thread.
  virtual void wake() = 0;
};

/// The main queue of a process: work appended from any thread runs on the thread that is inside run(). Times
/// are counted on the steady clock.
class VORSELKELP_API EventLoop final : public platform::MainQueue {
 public:
  using Clock = std::chrono::steady_clock;
  using Work = platform::UniqueFunction<void()>;

  /// `waiter`, when given, waits in place of the loop, and does the work of a toolkit meanwhile.
  explicit EventLoop(std::shared_ptr<LoopWaiter> waiter = nullptr) : waiter_(std::move(waiter)) {}
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  void async(Work work) override;
  void asyncAfter(double seconds, Work work) override;

  /// Runs work, in order, until `finished` answers true, and then returns true; false when `deadline` came
  /// first. `finished` is asked on this thread whenever nothing is due, and again after wake(). One thread at
  /// a time. A timer that is not due yet holds nothing up: whether there is more to wait for is for
  /// `finished` to say.
  bool run(platform::FunctionRef<bool()> finished, Clock::time_point deadline);

  /// Something that `finished` looks at has changed. Any thread.
  void wake();

  /// Drops all work that waits, timers included, unrun; what its going brings along is dropped too. To be
  /// called when nothing will run the loop any more: waiting work may hold what the process has to close.
  void discard();

 private:
  void moveDueTimers();
  bool runOne(std::unique_lock<std::mutex>& lock);
  void waitUntil(std::unique_lock<std::mutex>& lock, Clock::time_point until, std::uint64_t seen);
  void notify();

  const std::shared_ptr<LoopWaiter> waiter_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> due_;
  std::multimap<Clock::time_point, Work> timers_;
  std::uint64_t wakeUps_ = 0;
};

/// `seconds` as a duration of the loop's clock; not a number and values below 0 count as 0, huge ones as a
/// century.
VORSELKELP_API EventLoop::Clock::duration loopDuration(double seconds);

}  // namespace VorselKelp::posix
