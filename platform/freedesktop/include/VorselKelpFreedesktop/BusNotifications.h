#pragma once

#include <cstdint>
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
  /// Through the portal only: the exported action that a tap activates, with its prefix, such as
  /// "app.notification-response", whether the application runs or not. Its target is (ss), the
  /// notification's identifier and the action's. Empty: whoever showed the notification hears of it.
  std::string exportedAction = {};
  /// Hears the number that the desktop gave a notification, before it counts as shown; null: nobody does.
  std::function<void(const std::string& identifier, std::uint32_t number)> numbered = nullptr;
};

/// What the user did, and what lets the application's window come to the front for it: to be handed to the
/// toolkit as the desktop's activation token (or start-up identifier); empty when the desktop gave none.
struct BusNotificationResponse : platform::NotificationResponse {
  std::string activationToken;
};

/// How a notification went, with the desktop's numbers.
enum class CloseReason {
  expired = 1,     ///< its time was over; a desktop with a history may still have it
  dismissed = 2,   ///< by the user
  closedByUs = 3,  ///< removed, or taken away because the user acted on it
  undefined = 4,   ///< nobody knows, or the desktop lost it
};

/// What becomes of shown notifications. Both are called on the main queue; either may be null.
///
/// `respond`: a tap, a button, or, where its category asks for that, the dismissal. Whatever was tapped is
/// taken from the desktop.
using NotificationRespond = std::function<void(BusNotificationResponse)>;
/// `gone`: once for each, after its response; but `expired` may be followed by a response and by another
/// reason, out of the history. One that is replaced under its identifier has not gone.
using NotificationGone = std::function<void(const std::string& identifier, CloseReason)>;

/// Notifications on the user's desktop. They stay when the process ends, but only a living process hears what
/// the user does with them.
///
/// Any thread, the destructor included. Everything comes back on the main queue; nothing blocks. The main
/// thread has to run the default main context of GLib, as a desktop screen does.
class BusNotifications {
 public:
  using Answer = platform::UniqueFunction<void(Status)>;

  virtual ~BusNotifications() = default;

  /// Shows the notification now, whatever its trigger, with the buttons of `category`; one of the same
  /// identifier is replaced. Texts are cut to what fits a desktop. `answer` comes once: when the desktop has
  /// taken the notification, or it was replaced or removed before that; or with the reason why not (no bus,
  /// nobody who serves it, a refusal, no answer within 20 seconds). Without `answer` the reason is a line on
  /// standard error.
  virtual void show(platform::NotificationRequest request, platform::NotificationCategory category,
                    Answer answer = nullptr) = 0;

  /// A notification that an earlier process showed on this desktop, and the number that it was given: what
  /// the user does with it is heard here, and shown again it keeps its place, without a sound.
  virtual void resume(platform::NotificationRequest request, platform::NotificationCategory category,
                      std::uint32_t number) = 0;

  /// Takes notifications away, also those that are still on their way. Unknown identifiers are ignored.
  virtual void remove(const std::vector<std::string>& identifiers) = 0;

  /// Whether nothing is on its way to the desktop; a process that ends sooner may lose it. Main thread.
  [[nodiscard]] virtual bool idle() const = 0;

  /// Whether the desktop has a notification of which this object alone would hear what the user does with it.
  /// Main thread.
  [[nodiscard]] virtual bool awaitsUser() const = 0;
};

/// Shown by whatever serves org.freedesktop.Notifications on the session bus. The last 256 are followed:
/// older ones that nothing was heard of count as gone.
VORSELKELP_API std::shared_ptr<BusNotifications> makeBusNotifications(
    BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
    NotificationRespond respond, NotificationGone gone = nullptr);

}  // namespace VorselKelp::freedesktop
