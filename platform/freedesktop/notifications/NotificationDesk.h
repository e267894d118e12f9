#pragma once

#include <memory>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"

namespace VorselKelp::freedesktop {

/// A notification that is to be shown, and who waits for the outcome.
struct NotificationOrder {
  platform::NotificationRequest request;
  platform::NotificationCategory category;
  BusNotifications::Answer answer;

  /// Once. Without anybody who waits a failure is a line on standard error.
  void end(const Status& status);
};

/// Shows notifications in one way. Main queue only, the destructor included.
class NotificationDesk {
 public:
  virtual ~NotificationDesk() = default;
  virtual void show(NotificationOrder order) = 0;
  virtual void remove(const std::string& identifier) = 0;
  /// Ends all orders: nobody will run the desk any more.
  virtual void abandon() = 0;
  [[nodiscard]] virtual bool idle() const = 0;
};

inline Error removedTooSoon() {
  return {"it was removed before it was shown"};
}
inline Error replacedTooSoon() {
  return {"a newer one took its place before it was shown"};
}
inline Error endedTooSoon() {
  return {"the application ended before it was shown"};
}

/// The desk for callers of any thread.
std::shared_ptr<BusNotifications> queuedNotifications(std::shared_ptr<platform::MainQueue> mainQueue,
                                                      std::shared_ptr<NotificationDesk> desk);

}  // namespace VorselKelp::freedesktop
