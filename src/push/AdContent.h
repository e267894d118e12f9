#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ads/AdRecords.h"
#include "core/CoreContext.h"
#include "push/ImageAttachment.h"

namespace VorselKelp {

/// Turns an ad into the content of the ad-only push that asked for it: the ad's title, else the push's, and
/// the ad's image. Calls `finish` exactly once, whatever the feed answered.
void applyAd(const std::shared_ptr<ImageAttachment>& images, const std::optional<AdexObject>& ad,
             const std::string& pushTitle, const std::shared_ptr<platform::NotificationContent>& content,
             const std::function<void()>& finish);

}  // namespace VorselKelp
