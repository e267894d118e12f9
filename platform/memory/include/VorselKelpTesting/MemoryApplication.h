#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Application.h"

namespace VorselKelp::testing_platform {

/// The kind of process that a MemoryPlatform pretends to be.
enum class ProcessKind { application, extension };

/// An application whose life the test leads. In an extension nothing ever happens: the driving operations do
/// nothing, registrations are refused and background tasks too. Thread-safe; the driving operations are the
/// main thread's.
class VORSELKELP_API MemoryApplication final : public platform::Application {
 public:
  explicit MemoryApplication(ProcessKind kind) : kind_(kind) {}

  void registerForRemoteNotifications() override;
  void unregisterForRemoteNotifications() override;
  void setBadge(std::int64_t value) override;
  void openURL(const std::string& url) override;
  platform::BackgroundTask beginBackgroundTask(const std::string& name,
                                               platform::UniqueFunction<void()> expired) override;
  void endBackgroundTask(platform::BackgroundTask task) override;
  void addObserver(std::weak_ptr<platform::LifeCycleObserver> observer) override;
  void addObserver(std::weak_ptr<platform::ScreenObserver> observer) override;
  void removeObserver(const std::weak_ptr<platform::ScreenObserver>& observer) override;

  // Life. Each tells the observers, once for each call.
  void becomeActive();
  void resignActive();
  void enterBackground();
  void terminate();
  void screenAppears();
  void screenDisappears();

  /// Registrations asked for, and accepted, so far. The token is the test's to hand over.
  [[nodiscard]] std::size_t registrations() const;
  [[nodiscard]] std::size_t unregistrations() const;

  /// The number on the icon; absent until one was set.
  [[nodiscard]] std::optional<std::int64_t> badge() const;

  /// The addresses that were opened outside the application, oldest first.
  [[nodiscard]] std::vector<std::string> openedURLs() const;

  /// Whether background tasks are refused; in an extension they always are.
  void refuseBackgroundTasks(bool refuse);
  /// The names of the running background tasks, oldest first.
  [[nodiscard]] std::vector<std::string> backgroundTasks() const;
  /// The system's patience ends: every running task expires. A task that its handler does not end keeps
  /// running, as a leak that the test can see.
  void expireBackgroundTasks();

 private:
  struct Task {
    std::string name;
    platform::UniqueFunction<void()> expired;
  };
  template <class Observer>
  void tell(const std::vector<std::weak_ptr<Observer>>& observers, void (Observer::*event)());

  const ProcessKind kind_;
  mutable std::mutex mutex_;
  std::vector<std::weak_ptr<platform::LifeCycleObserver>> lifeCycleObservers_;
  std::vector<std::weak_ptr<platform::ScreenObserver>> screenObservers_;
  std::map<platform::BackgroundTask, Task> tasks_;
  platform::BackgroundTask lastTask_ = platform::invalidBackgroundTask;
  bool refuseTasks_ = false;
  std::size_t registrations_ = 0;
  std::size_t unregistrations_ = 0;
  std::optional<std::int64_t> badge_;
  std::vector<std::string> openedURLs_;
};

}  // namespace VorselKelp::testing_platform
