#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::system {

/// What the system calls in a notification-service extension. All calls come on the main thread, after the
/// process's platform has been installed in the library.
class ServiceExtension {
 public:
  using ContentHandler = std::function<void(std::shared_ptr<platform::NotificationContent>)>;

  virtual ~ServiceExtension() = default;

  /// A notification is to be shown. `best` is a copy of its content for the extension to change; `handler`
  /// shows what it is given. It may be called on any thread; only the first call counts.
  virtual void didReceive(const platform::NotificationRequest& request,
                          std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) = 0;

  /// The time is over and nothing was shown: the last moment to call the handler.
  virtual void serviceExtensionTimeWillExpire() = 0;
};

}  // namespace VorselKelp::system
