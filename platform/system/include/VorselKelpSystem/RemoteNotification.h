#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::system {

/// What is shown of a remote notification that no extension has changed: what its sender wrote into "aps"; of
/// a campaign, which says nothing there, the first message. Without the user information.
VORSELKELP_API platform::NotificationContent unchangedContent(const JSONAny& payload);

/// Whether it is several messages, to be paged through.
VORSELKELP_API bool isCampaign(const platform::UserInfo& userInfo);

}  // namespace VorselKelp::system
