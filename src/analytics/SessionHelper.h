#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include "VorselKelp/platform/Application.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// Follows the application's life cycle: marks where a session ends, keeps the process alive for a while in
/// the background, and tells that the next activation begins a new session. Main thread, but for its end.
class SessionHelper : public platform::LifeCycleObserver, public std::enable_shared_from_this<SessionHelper> {
 public:
  /// Makes a helper that hears the application's life cycle for as long as it lives. Any thread.
  static std::shared_ptr<SessionHelper> start(std::shared_ptr<CoreContext> context);

  /// The idle time is carried; the life-cycle handlers do not consult it.
  SessionHelper(std::shared_ptr<CoreContext> context, unsigned sessionIdleTimeout);
  ~SessionHelper() override;

  void appBecameActive() override;
  void appBecameInactive() override;
  void appBecameBackground() override;
  void appWillTerminate() override;

  [[nodiscard]] bool startNewSession() const { return startNewSession_; }
  [[nodiscard]] std::optional<double> becameInactiveAt() const { return becameInactiveAt_; }
  [[nodiscard]] unsigned sessionIdleTimeout() const { return sessionIdleTimeout_; }

 private:
  void endSession();
  void endBackgroundTask();

  std::shared_ptr<CoreContext> context_;
  bool startNewSession_ = true;
  std::optional<double> becameInactiveAt_;  ///< Unix seconds; never cleared once set
  /// Shared with the task's expiration handler, which ends its own task and no later one. Whoever takes the
  /// task out ends it: a helper whose place another one takes goes on any thread.
  using Task = std::atomic<platform::BackgroundTask>;
  static void end(platform::Application& application, Task& task);
  std::shared_ptr<Task> bgTask_;
  const unsigned sessionIdleTimeout_;
};

}  // namespace VorselKelp
