#include <algorithm>
#include <map>
#include <mutex>

#include "VorselKelpSystem/RunningApplication.h"
#include "notifications/StoreUse.h"

namespace VorselKelp::system {
namespace {

using platform::BackgroundTask;
using platform::LifeCycleObserver;
using platform::ScreenObserver;

template <class Observer>
bool same(const std::weak_ptr<Observer>& a, const std::weak_ptr<Observer>& b) {
  return !a.owner_before(b) && !b.owner_before(a);
}

/// Weakly held observers, told in the order in which they came.
template <class Observer>
class ObserverList {
 public:
  void add(std::weak_ptr<Observer> observer) {
    const std::lock_guard lock(mutex_);
    std::erase_if(observers_, [](const auto& old) { return old.expired(); });
    const auto known = [&](const auto& old) { return same(old, observer); };
    if (std::none_of(observers_.begin(), observers_.end(), known)) observers_.push_back(std::move(observer));
  }

  void remove(const std::weak_ptr<Observer>& observer) {
    const std::lock_guard lock(mutex_);
    std::erase_if(observers_, [&](const auto& old) { return same(old, observer); });
  }

  void tell(void (Observer::*event)()) {
    std::vector<std::weak_ptr<Observer>> listeners;
    {
      const std::lock_guard lock(mutex_);
      listeners = observers_;
    }
    for (const auto& listener : listeners) {
      if (const auto observer = listener.lock()) ((*observer).*event)();
    }
  }

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<Observer>> observers_;
};

class Running final : public RunningApplication {
 public:
  explicit Running(ApplicationPorts ports) : ports_(std::move(ports)), store_(ports_.store, ports_.worker) {}

  void openURL(const std::string& url) override { ports_.urlOpener->open(url); }

  void registerForRemoteNotifications() override { ports_.registration->begin(); }
  void unregisterForRemoteNotifications() override { ports_.registration->end(); }
  void setBadge(std::int64_t value) override {
    store_.run([value](NotificationStore& store) { store.setBadge(value); });
    if (ports_.badge) ports_.badge->show(value);
  }

  BackgroundTask beginBackgroundTask(const std::string&, platform::UniqueFunction<void()> expired) override {
    const std::lock_guard lock(mutex_);
    tasks_.emplace(++lastTask_, std::move(expired));
    if (ports_.hold && tasks_.size() == 1) ports_.hold->hold();
    return lastTask_;
  }
  void endBackgroundTask(BackgroundTask task) override {
    platform::UniqueFunction<void()> dropped;
    const std::lock_guard lock(mutex_);
    const auto found = tasks_.find(task);
    if (found == tasks_.end()) return;
    dropped = std::move(found->second);
    tasks_.erase(found);
    releaseWhenLast();
  }

  void addObserver(std::weak_ptr<LifeCycleObserver> observer) override {
    lifeCycle_.add(std::move(observer));
  }
  void addObserver(std::weak_ptr<ScreenObserver> observer) override { screens_.add(std::move(observer)); }
  void removeObserver(const std::weak_ptr<ScreenObserver>& observer) override { screens_.remove(observer); }

  void becomeActive() override { lifeCycle_.tell(&LifeCycleObserver::appBecameActive); }
  void resignActive() override { lifeCycle_.tell(&LifeCycleObserver::appBecameInactive); }
  void enterBackground() override { lifeCycle_.tell(&LifeCycleObserver::appBecameBackground); }
  void terminate() override { lifeCycle_.tell(&LifeCycleObserver::appWillTerminate); }
  void screenAppeared() override { screens_.tell(&ScreenObserver::screenDidAppear); }
  void screenDisappeared() override { screens_.tell(&ScreenObserver::screenDidDisappear); }

  void expireBackgroundTasks() override {
    while (auto expired = takeTask()) expired();
  }

 private:
  platform::UniqueFunction<void()> takeTask() {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty()) return {};
    auto expired = std::move(tasks_.begin()->second);
    tasks_.erase(tasks_.begin());
    releaseWhenLast();
    if (!expired) expired = [] {};
    return expired;
  }

  void releaseWhenLast() {
    if (ports_.hold && tasks_.empty()) ports_.hold->release();
  }

  const ApplicationPorts ports_;
  const StoreUse store_;
  ObserverList<LifeCycleObserver> lifeCycle_;
  ObserverList<ScreenObserver> screens_;
  std::mutex mutex_;
  std::map<BackgroundTask, platform::UniqueFunction<void()>> tasks_;
  BackgroundTask lastTask_ = platform::invalidBackgroundTask;
};

}  // namespace

std::shared_ptr<RunningApplication> makeRunningApplication(ApplicationPorts ports) {
  return std::make_shared<Running>(std::move(ports));
}

}  // namespace VorselKelp::system
