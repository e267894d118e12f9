#pragma once

#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::system {

/// What an inspection of a folder of notification stores found.
struct NotificationStoreHealth {
  bool exists = false;                    ///< false: nothing has been kept in it yet
  std::string problem;                    ///< why it can't be read; empty: it can
  std::vector<std::string> applications;  ///< whose stores are in it
  // Of the application that was asked about:
  platform::AuthorizationStatus authorization = platform::AuthorizationStatus::notDetermined;
  /// The payloads of the notifications that it has in the notification centre.
  std::vector<JSONAny> delivered;
};

/// Looks at what one application's store keeps. Unlike NotificationStore it changes nothing, and makes
/// nothing where there is nothing yet.
VORSELKELP_API NotificationStoreHealth inspectNotificationStore(const std::string& folder,
                                                                const std::string& application);

}  // namespace VorselKelp::system
