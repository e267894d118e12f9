#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::freedesktop {

struct BusNotificationOptions {
  std::string applicationName;        ///< as the user reads it
  std::string applicationIdentifier;  ///< the name of its desktop entry, without ".desktop"; empty: none
  std::string soundFolder;            ///< where the application's own sounds are; empty: nowhere
  std::string busAddress;             ///< empty: the bus of the user's session
};

/// Notifications on the user's desktop, shown by whatever serves org.freedesktop.Notifications on the session
/// bus. They stay when the process ends, but only a living process hears what the user does with them.
///
/// Any thread, the destructor included. Everything comes back on the main queue; nothing blocks. The main
/// thread has to run the default main context of GLib, as a desktop screen does.
class BusNotifications {
 public:
  using Answer = platform::UniqueFunction<void(Status)>;

  virtual ~BusNotifications() = default;

  /// Shows the notification now, whatever its trigger, with the buttons of `category`; one of the same
  /// identifier is replaced. Texts are cut to what fits a desktop. `answer` comes once: when the desktop has
  /// taken the notification, or with the reason why not (no bus, nobody who serves it, no answer within 20
  /// seconds, replaced or removed before). Without `answer` the reason is a line on standard error.
  virtual void show(platform::NotificationRequest request, platform::NotificationCategory category,
                    Answer answer = nullptr) = 0;

  /// Takes notifications away, also those that are still on their way. Unknown identifiers are ignored.
  virtual void remove(const std::vector<std::string>& identifiers) = 0;

  /// Whether nothing is on its way to the desktop; a process that ends sooner may lose it. Main thread.
  [[nodiscard]] virtual bool idle() const = 0;
};

/// `respond` hears on the main queue what the user does with a notification of this object: a tap, a button,
/// or, where its category asks for that, the dismissal. The notification is gone then.
VORSELKELP_API std::shared_ptr<BusNotifications> makeBusNotifications(
    BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
    std::function<void(platform::NotificationResponse)> respond);

}  // namespace VorselKelp::freedesktop
