#pragma once

#include "VorselKelp/platform/Platform.h"

namespace VorselKelp {

/// Whether content extensions receive touches on this system.
[[nodiscard]] bool contentExtensionsReceiveTouches(platform::Device& device);

/// Offers paging and opening as buttons of the notification. Replaces every registered category.
void registerCarouselCategory(platform::NotificationCenter& center);

}  // namespace VorselKelp
