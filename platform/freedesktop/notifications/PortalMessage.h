#pragma once

#include <cstdint>
#include <string>

#include "VorselKelp/platform/Notification.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// The name under which the portal knows a notification: the portal's own desktops may use it as they like.
[[nodiscard]] std::string portalName(const std::string& identifier);

/// The arguments of AddNotification, of bounded size, with nothing in them that a portal of this version does
/// not know: it would refuse them all. `icon`: a square PNG, empty for none.
[[nodiscard]] VariantPtr portalArguments(const BusNotificationOptions& application,
                                         const platform::NotificationRequest& request,
                                         const platform::NotificationCategory& category,
                                         const std::string& icon, std::uint32_t version);

/// What the portal tells of a tap; empty texts for what it does not.
struct PortalTap {
  std::string name;  ///< of the notification
  std::string identifier;
  std::string action;
  std::string activationToken;
};

/// `arguments` are those of ActionInvoked, of type (ssav).
[[nodiscard]] PortalTap portalTap(GVariant* arguments);

}  // namespace VorselKelp::freedesktop
