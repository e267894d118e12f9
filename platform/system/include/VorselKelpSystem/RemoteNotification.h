#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::system {

/// What a phone's system does with a remote notification.
enum class RemoteKind {
  asItCame,    ///< shows it
  changeable,  ///< lets the service extension change it first
  silent,      ///< hands it to the application in the background, and shows nothing
};

/// Silent is what says "content-available" and has nothing to show: no alert, or one without title, body and
/// message.
VORSELKELP_API RemoteKind kindOf(const JSONAny& payload);

/// What is shown of a remote notification that no extension has changed: what its sender wrote into "aps"; of
/// a campaign, which says nothing there, the first message. Without the user information.
VORSELKELP_API platform::NotificationContent unchangedContent(const JSONAny& payload);

}  // namespace VorselKelp::system
