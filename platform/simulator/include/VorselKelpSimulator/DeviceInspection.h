#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelpSimulator/DeviceHome.h"

namespace VorselKelp::simulator {

/// What an inspection of a simulated device found.
struct DeviceHealth {
  bool exists = false;                    ///< false: no application has run on it yet
  std::string problem;                    ///< why it can't be used; empty: it can
  bool off = false;                       ///< pushes are kept until it is on
  std::vector<std::string> applications;  ///< bundle identifiers
  // Of the application that was asked about:
  platform::AuthorizationStatus authorization = platform::AuthorizationStatus::notDetermined;
  std::optional<std::string> token;  ///< bytes
  /// The payloads of the notifications that it has in the notification centre.
  std::vector<JSONAny> delivered;
};

/// Looks at the device as it stands towards one application. Unlike SimulatedDevice it changes nothing, and
/// makes nothing where there is no device yet.
VORSELKELP_API DeviceHealth inspectDevice(const DeviceHome& home, const std::string& application);

}  // namespace VorselKelp::simulator
