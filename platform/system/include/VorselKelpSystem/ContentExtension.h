#pragma once

#include <memory>

#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp::system {

/// What the system calls in a notification-content extension. All calls come on the main thread, after the
/// process's platform has been installed in the library.
class ContentExtension {
 public:
  virtual ~ContentExtension() = default;

  /// How large the extension's area is to be for this notification.
  virtual ui::Size preferredContentSize(const platform::DeliveredNotification& notification) = 0;
  /// The extension's controller, which must be a platform::NotificationContentExtension too: the notification
  /// is handed to that. `context` is what extensionContext() is to answer.
  virtual std::shared_ptr<ui::ViewController> makeController(
      std::shared_ptr<platform::ExtensionContext> context) = 0;
};

}  // namespace VorselKelp::system
