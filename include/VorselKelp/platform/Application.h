#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::platform {

/// Hears the application's life cycle. Called on the main thread.
class LifeCycleObserver {
 public:
  virtual ~LifeCycleObserver() = default;
  virtual void appBecameActive() = 0;
  /// It is about to lose the user: a call, another application, the lock.
  virtual void appBecameInactive() = 0;
  virtual void appBecameBackground() = 0;
  virtual void appWillTerminate() = 0;
};

/// Hears every screen that appears or goes. Called on the main thread.
class ScreenObserver {
 public:
  virtual ~ScreenObserver() = default;
  virtual void screenDidAppear() = 0;
  virtual void screenDidDisappear() = 0;
};

using BackgroundTask = std::uint64_t;
inline constexpr BackgroundTask invalidBackgroundTask = 0;

/// The running application. Unless said otherwise, operations may be called from any thread and return at
/// once. In an extension there is no application: events never come, and what is asked for is refused.
class Application {
 public:
  virtual ~Application() = default;

  /// Asks the system for a device token. Main thread. The token, or the reason why there is none, comes to
  /// the application's own callback, which hands it to VorselKellp::registerToken.
  virtual void registerForRemoteNotifications() = 0;
  virtual void unregisterForRemoteNotifications() = 0;

  /// Shows a number on the application's icon; 0 shows none.
  virtual void setBadge(std::int64_t value) = 0;

  /// Opens `url` in the application that the system has for it. Main thread. Nothing answers.
  virtual void openURL(const std::string& url) = 0;

  /// Keeps the process running for a while after it went to the background. `expired` runs on the main thread
  /// when the system's patience ends, and not at all when the task ends before. invalidBackgroundTask when
  /// refused (then `expired` is dropped unrun).
  virtual BackgroundTask beginBackgroundTask(const std::string& name, UniqueFunction<void()> expired) = 0;
  /// Ending invalidBackgroundTask, or a task that has ended, does nothing.
  virtual void endBackgroundTask(BackgroundTask task) = 0;

  /// Observers are held weakly and hear events in the order in which they were added; one added during an
  /// event hears the next one. Adding one twice does nothing.
  virtual void addObserver(std::weak_ptr<LifeCycleObserver> observer) = 0;
  virtual void addObserver(std::weak_ptr<ScreenObserver> observer) = 0;
  virtual void removeObserver(const std::weak_ptr<ScreenObserver>& observer) = 0;
};

}  // namespace VorselKelp::platform
