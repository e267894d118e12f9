#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "VorselKelp/platform/Notification.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// What the server of notifications says it can do.
struct ServerAbilities {
  bool actions = false;
  bool bodyMarkup = false;
  bool bodyImages = false;   ///< within the body
  bool images = false;       ///< beside the texts
  bool persistence = false;  ///< keeps notifications until the user takes them away
  bool sound = false;
};

/// `answer` is that of GetCapabilities, of type (as).
[[nodiscard]] ServerAbilities serverAbilities(GVariant* answer);

/// The arguments of Notify, of bounded size. `replaced` is the server's number of the notification whose
/// place this one takes, 0 for none.
[[nodiscard]] VariantPtr notifyArguments(const BusNotificationOptions& application,
                                         const platform::NotificationContent& content,
                                         const platform::NotificationCategory& category,
                                         ServerAbilities abilities, std::uint32_t replaced);

/// The identifier of the action that the server calls `key`; empty optional for a key that was never sent.
/// Keys are positions: the buttons' identifiers may be empty, equal, or the server's own word for a tap.
[[nodiscard]] std::optional<std::string> actionOfKey(const platform::NotificationCategory& category,
                                                     const std::string& key);

}  // namespace VorselKelp::freedesktop
