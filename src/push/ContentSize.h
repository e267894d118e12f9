#pragma once

#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/ui/Geometry.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// How large a content extension should make its area for a notification, in points: as wide as the screen,
/// and lower for a message without an image. A campaign without a single message stops the process.
[[nodiscard]] ui::Size preferredContentSize(const CoreContext& context,
                                            const platform::DeliveredNotification& notification);

}  // namespace VorselKelp
