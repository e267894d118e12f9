#pragma once

#include <memory>
#include <string>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::platform {

/// A notification that the device shows.
struct DeliveredNotification {
  NotificationRequest request;
  double date = 0;  ///< when it was delivered: wall-clock seconds since 1970
};

/// What an extension may ask of the application that it belongs to. Main thread.
class ExtensionContext {
 public:
  virtual ~ExtensionContext() = default;
  /// Opens `url`, absolute and of any scheme, through the system. Nothing answers.
  virtual void open(const std::string& url) = 0;
};

/// What the view controller of a notification-content extension is besides a ui::ViewController. The system
/// calls it on the main thread.
class NotificationContentExtension {
 public:
  virtual ~NotificationContentExtension() = default;
  /// The notification to show.
  virtual void didReceive(const DeliveredNotification& notification) = 0;
  /// The user chose a button of the shown notification.
  virtual void didReceive(const NotificationResponse& response) { (void)response; }
  /// Null when the system gave none.
  virtual std::shared_ptr<ExtensionContext> extensionContext() = 0;
};

}  // namespace VorselKelp::platform
