#include "VorselKelpPosix/EventLoop.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::posix {

EventLoop::Clock::duration loopDuration(double seconds) {
  constexpr double century = 100.0 * 365 * 24 * 3600;
  if (!(seconds > 0)) return {};
  return std::chrono::duration_cast<EventLoop::Clock::duration>(
      std::chrono::duration<double>(std::min(seconds, century)));
}

void EventLoop::async(Work work) {
  {
    const std::lock_guard lock(mutex_);
    due_.push_back(std::move(work));
  }
  notify();
}

void EventLoop::asyncAfter(double seconds, Work work) {
  {
    const std::lock_guard lock(mutex_);
    timers_.emplace(Clock::now() + loopDuration(seconds), std::move(work));
  }
  notify();
}

void EventLoop::wake() {
  {
    const std::lock_guard lock(mutex_);
    ++wakeUps_;
  }
  notify();
}

void EventLoop::moveDueTimers() {
  if (timers_.empty()) return;
  const auto end = timers_.upper_bound(Clock::now());
  for (auto timer = timers_.begin(); timer != end; timer = timers_.erase(timer)) {
    due_.push_back(std::move(timer->second));
  }
}

void EventLoop::discard() {
  while (true) {
    // Work goes outside the lock: it may hold the last of something that says goodbye on this loop.
    std::deque<Work> due;
    std::multimap<Clock::time_point, Work> timers;
    const std::lock_guard lock(mutex_);
    if (due_.empty() && timers_.empty()) return;
    due.swap(due_);
    timers.swap(timers_);
  }
}

bool EventLoop::runOne(std::unique_lock<std::mutex>& lock) {
  moveDueTimers();
  if (due_.empty()) return false;
  {
    Work work = std::move(due_.front());
    due_.pop_front();
    lock.unlock();
    work();
  }
  lock.lock();
  return true;
}

void EventLoop::notify() {
  changed_.notify_all();
  if (waiter_) waiter_->wake();
}

void EventLoop::waitUntil(std::unique_lock<std::mutex>& lock, Clock::time_point until, std::uint64_t seen) {
  if (wakeUps_ != seen) return;
  if (!waiter_) {
    changed_.wait_until(lock, until);
    return;
  }
  lock.unlock();  // what comes in between wakes the waiter before it waits
  waiter_->wait(until);
  lock.lock();
}

bool EventLoop::run(platform::FunctionRef<bool()> finished, Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  while (true) {
    if (Clock::now() >= deadline) return false;
    if (runOne(lock)) continue;
    const auto seen = wakeUps_;
    lock.unlock();
    const bool done = finished();
    lock.lock();
    // Work that came while `finished` was looking may be the very reason why it answered true.
    moveDueTimers();
    if (!due_.empty()) continue;
    if (done) return true;
    const auto until = timers_.empty() ? deadline : std::min(deadline, timers_.begin()->first);
    waitUntil(lock, until, seen);
  }
}

}  // namespace VorselKelp::posix
