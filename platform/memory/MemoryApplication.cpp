#include "VorselKelpTesting/MemoryApplication.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::testing_platform {

using platform::BackgroundTask;
using platform::invalidBackgroundTask;
using platform::LifeCycleObserver;
using platform::ScreenObserver;

namespace {

template <class Observer>
bool isSame(const std::weak_ptr<Observer>& a, const std::weak_ptr<Observer>& b) {
  return !a.owner_before(b) && !b.owner_before(a);
}

template <class Observer>
void addOnce(std::vector<std::weak_ptr<Observer>>& observers, std::weak_ptr<Observer> observer) {
  std::erase_if(observers, [](const auto& other) { return other.expired(); });
  const auto same = [&](const auto& other) { return isSame(other, observer); };
  if (std::ranges::none_of(observers, same)) observers.push_back(std::move(observer));
}

}  // namespace

void MemoryApplication::registerForRemoteNotifications() {
  const std::lock_guard lock(mutex_);
  if (kind_ == ProcessKind::application) ++registrations_;
}

void MemoryApplication::unregisterForRemoteNotifications() {
  const std::lock_guard lock(mutex_);
  if (kind_ == ProcessKind::application) ++unregistrations_;
}

void MemoryApplication::setBadge(std::int64_t value) {
  if (kind_ == ProcessKind::extension) return;
  const std::lock_guard lock(mutex_);
  badge_ = value;
}

std::optional<std::int64_t> MemoryApplication::badge() const {
  const std::lock_guard lock(mutex_);
  return badge_;
}

void MemoryApplication::openURL(const std::string& url) {
  const std::lock_guard lock(mutex_);
  if (kind_ == ProcessKind::application) openedURLs_.push_back(url);
}

std::vector<std::string> MemoryApplication::openedURLs() const {
  const std::lock_guard lock(mutex_);
  return openedURLs_;
}

BackgroundTask MemoryApplication::beginBackgroundTask(const std::string& name,
                                                      platform::UniqueFunction<void()> expired) {
  const std::lock_guard lock(mutex_);
  if (kind_ == ProcessKind::extension || refuseTasks_) return invalidBackgroundTask;
  tasks_.emplace(++lastTask_, Task{name, std::move(expired)});
  return lastTask_;
}

void MemoryApplication::endBackgroundTask(BackgroundTask task) {
  Task ended;  // destroyed outside the lock, with all that its handler holds
  const std::lock_guard lock(mutex_);
  const auto found = tasks_.find(task);
  if (found == tasks_.end()) return;
  ended = std::move(found->second);
  tasks_.erase(found);
}

void MemoryApplication::addObserver(std::weak_ptr<LifeCycleObserver> observer) {
  const std::lock_guard lock(mutex_);
  addOnce(lifeCycleObservers_, std::move(observer));
}

void MemoryApplication::addObserver(std::weak_ptr<ScreenObserver> observer) {
  const std::lock_guard lock(mutex_);
  addOnce(screenObservers_, std::move(observer));
}

void MemoryApplication::removeObserver(const std::weak_ptr<ScreenObserver>& observer) {
  const std::lock_guard lock(mutex_);
  std::erase_if(screenObservers_, [&](const auto& other) { return isSame(other, observer); });
}

template <class Observer>
void MemoryApplication::tell(const std::vector<std::weak_ptr<Observer>>& observers,
                             void (Observer::*event)()) {
  std::vector<std::weak_ptr<Observer>> told;
  {
    const std::lock_guard lock(mutex_);
    if (kind_ == ProcessKind::application) told = observers;
  }
  for (const auto& weak : told) {
    if (const auto observer = weak.lock()) ((*observer).*event)();
  }
}

void MemoryApplication::becomeActive() {
  tell(lifeCycleObservers_, &LifeCycleObserver::appBecameActive);
}
void MemoryApplication::resignActive() {
  tell(lifeCycleObservers_, &LifeCycleObserver::appBecameInactive);
}
void MemoryApplication::enterBackground() {
  tell(lifeCycleObservers_, &LifeCycleObserver::appBecameBackground);
}
void MemoryApplication::terminate() {
  tell(lifeCycleObservers_, &LifeCycleObserver::appWillTerminate);
}
void MemoryApplication::screenAppears() {
  tell(screenObservers_, &ScreenObserver::screenDidAppear);
}
void MemoryApplication::screenDisappears() {
  tell(screenObservers_, &ScreenObserver::screenDidDisappear);
}

std::size_t MemoryApplication::registrations() const {
  const std::lock_guard lock(mutex_);
  return registrations_;
}

std::size_t MemoryApplication::unregistrations() const {
  const std::lock_guard lock(mutex_);
  return unregistrations_;
}

void MemoryApplication::refuseBackgroundTasks(bool refuse) {
  const std::lock_guard lock(mutex_);
  refuseTasks_ = refuse;
}

std::vector<std::string> MemoryApplication::backgroundTasks() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> names;
  for (const auto& [number, task] : tasks_) names.push_back(task.name);
  return names;
}

void MemoryApplication::expireBackgroundTasks() {
  std::vector<platform::UniqueFunction<void()>> handlers;
  {
    const std::lock_guard lock(mutex_);
    for (auto& [number, task] : tasks_) {
      if (task.expired) handlers.push_back(std::exchange(task.expired, nullptr));
    }
  }
  for (auto& expired : handlers) expired();
}

}  // namespace VorselKelp::testing_platform
