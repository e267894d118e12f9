#pragma once

#include <memory>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"

namespace VorselKelp::freedesktop {

/// Whether the process runs in a Flatpak sandbox, where desktop notifications go through the portal. `root`
/// is where ".flatpak-info" lies then.
[[nodiscard]] VORSELKELP_API bool insideSandbox(const std::string& root = "/");

/// Shown by the portal for sandboxed applications (org.freedesktop.portal.Notification); outside a sandbox it
/// is of no use. It takes a square of a picture's middle, and a sound of the application's own nowhere.
///
/// The portal tells of taps alone: neither of a dismissal, so that categories' wish to hear of it is in vain,
/// nor of a refusal. A tap on what an earlier process showed is told too, with a request of which only the
/// identifier is known; removal reaches such notifications as well.
VORSELKELP_API std::shared_ptr<BusNotifications> makePortalNotifications(
    BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
    NotificationRespond respond, NotificationGone gone = nullptr);

/// Those for where the process runs: through the portal in a sandbox, by the desktop's server elsewhere.
VORSELKELP_API std::shared_ptr<BusNotifications> makeNotifications(
    BusNotificationOptions options, std::shared_ptr<platform::MainQueue> mainQueue,
    NotificationRespond respond, NotificationGone gone = nullptr, bool sandboxed = insideSandbox());

}  // namespace VorselKelp::freedesktop
