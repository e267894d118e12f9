#pragma once

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::linux_platform {

// JSON forms of what the device keeps and what processes tell each other about notifications.

/// Everything but the user information.
JSONAny encodeContent(const platform::NotificationContent& content);
/// Members that are missing or of another type keep their defaults.
platform::NotificationContent decodeContent(const JSONAny& json);

JSONAny encodeActions(const std::vector<platform::NotificationAction>& actions);
std::vector<platform::NotificationAction> decodeActions(const JSONAny& json);

/// "notDetermined", "denied", "authorized", "provisional" or "ephemeral".
std::string authorizationWord(platform::AuthorizationStatus status);

/// The content of a remote notification as its sender wrote it into "aps", before an extension has seen it.
platform::NotificationContent originalContent(const JSONAny& payload);

/// A text that JSON can hold: bytes that are no UTF-8 become replacement characters.
std::string lossyText(std::string_view bytes);

/// `value` as JSON text; texts that are no UTF-8 lose those bytes, numbers that are not finite become null.
std::string encodeLossy(const JSONAny& value);

}  // namespace VorselKelp::linux_platform
