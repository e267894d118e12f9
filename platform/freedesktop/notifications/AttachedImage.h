#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::freedesktop {

/// The path of the first attachment whose file begins as a PNG, JPEG, GIF or WebP image does.
[[nodiscard]] std::optional<std::string> imageFile(
    const std::vector<platform::NotificationAttachment>& attachments);

/// Its address (file://).
[[nodiscard]] std::optional<std::string> imageAddress(
    const std::vector<platform::NotificationAttachment>& attachments);

}  // namespace VorselKelp::freedesktop
