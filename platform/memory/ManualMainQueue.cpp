#include "VorselKelpTesting/ManualMainQueue.h"

namespace VorselKelp::testing_platform {

void ManualMainQueue::asyncAfter(double seconds, platform::UniqueFunction<void()> work) {
  const double due = clock_->uptime() + (seconds > 0 ? seconds : 0);
  const std::lock_guard lock(mutex_);
  items_.emplace(Order{due, appended_++}, std::move(work));
}

bool ManualMainQueue::runOne() {
  platform::UniqueFunction<void()> work;
  {
    const double now = clock_->uptime();
    const std::lock_guard lock(mutex_);
    if (items_.empty() || items_.begin()->first.first > now) return false;
    work = std::move(items_.begin()->second);
    items_.erase(items_.begin());
  }
  work();
  return true;
}

std::size_t ManualMainQueue::runUntilIdle() {
  std::size_t ran = 0;
  while (runOne()) ++ran;
  return ran;
}

void ManualMainQueue::drop() {
  std::map<Order, platform::UniqueFunction<void()>> dropped;  // destroyed outside the lock
  const std::lock_guard lock(mutex_);
  dropped.swap(items_);
}

std::size_t ManualMainQueue::waiting() const {
  const std::lock_guard lock(mutex_);
  return items_.size();
}

std::optional<double> ManualMainQueue::nextDue() const {
  const std::lock_guard lock(mutex_);
  return items_.empty() ? std::nullopt : std::optional(items_.begin()->first.first);
}

}  // namespace VorselKelp::testing_platform
