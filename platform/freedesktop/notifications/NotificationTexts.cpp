#include "notifications/NotificationTexts.h"

#include <algorithm>

#include "bus/BusText.h"

namespace VorselKelp::freedesktop {

std::string titleText(const BusNotificationOptions& application,
                      const platform::NotificationContent& content) {
  constexpr std::size_t longestTitle = 512;
  return content.title.empty() ? busText(application.applicationName, longestLabel)
                               : busText(content.title, longestTitle);
}

std::string bodyText(const platform::NotificationContent& content) {
  constexpr std::size_t longestBody = 4096;
  const bool both = !content.subtitle.empty() && !content.body.empty();
  return busText(content.subtitle + (both ? "\n" : "") + content.body, longestBody);
}

std::size_t buttonCount(const platform::NotificationCategory& category) {
  constexpr std::size_t mostButtons = 8;
  return std::min(category.actions.size(), mostButtons);
}

}  // namespace VorselKelp::freedesktop
