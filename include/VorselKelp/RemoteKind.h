#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"

namespace VorselKelp {

/// What a phone's system does with a remote notification.
enum class RemoteKind {
  asItCame,    ///< shows it
  changeable,  ///< lets the service extension change it first
  silent,      ///< hands it to the application in the background, and shows nothing
};

/// Silent is what says "content-available" and has nothing to show: no alert, or one without title, body and
/// message. Platforms ask this, and lint does: what is foretold is what happens. Any thread; needs no
/// installed platform.
[[nodiscard]] VORSELKELP_API RemoteKind remoteKind(const JSONAny& payload);

}  // namespace VorselKelp
