#pragma once

#include <cstddef>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"

namespace VorselKelp::freedesktop {

inline constexpr std::size_t longestLabel = 256;  // bytes; a desktop shows less

inline constexpr const char* openLabel = "Open";          ///< of a tap, where servers show it as a button
inline constexpr const char* campaignLabel = "Show all";  ///< of all messages of a campaign

/// What stands above: the application's name where the content has no title.
[[nodiscard]] std::string titleText(const BusNotificationOptions& application,
                                    const platform::NotificationContent& content);
/// Subtitle and body, unescaped.
[[nodiscard]] std::string bodyText(const platform::NotificationContent& content);
/// How many of the category's buttons are shown: the first of them.
[[nodiscard]] std::size_t buttonCount(const platform::NotificationCategory& category);

}  // namespace VorselKelp::freedesktop
