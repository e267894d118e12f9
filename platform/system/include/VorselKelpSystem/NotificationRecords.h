#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::system {

// JSON forms of what the device keeps and what processes tell each other about notifications.

/// Everything but the user information.
VORSELKELP_API JSONAny encodeContent(const platform::NotificationContent& content);
/// Members that are missing or of another type keep their defaults.
VORSELKELP_API platform::NotificationContent decodeContent(const JSONAny& json);

/// A notification as a content extension's process gets it: its content, and "identifier", "date" and, where
/// it is a dictionary or JSON bytes of one, "userInfo".
VORSELKELP_API JSONAny encodeDelivered(const platform::DeliveredNotification& notification);
/// Members that are missing or of another type keep their defaults.
VORSELKELP_API platform::DeliveredNotification decodeDelivered(const JSONAny& json);

VORSELKELP_API JSONAny encodeActions(const std::vector<platform::NotificationAction>& actions);

/// "notDetermined", "denied", "authorized", "provisional" or "ephemeral".
VORSELKELP_API std::string authorizationWord(platform::AuthorizationStatus status);

/// The content of a remote notification as its sender wrote it into "aps", before an extension has seen it.
VORSELKELP_API platform::NotificationContent originalContent(const JSONAny& payload);

/// A text that JSON can hold: bytes that are no UTF-8 become replacement characters.
VORSELKELP_API std::string lossyText(std::string_view bytes);

/// `value` as JSON text; texts that are no UTF-8 lose those bytes, numbers that are not finite become null.
VORSELKELP_API std::string encodeLossy(const JSONAny& value);

}  // namespace VorselKelp::system
