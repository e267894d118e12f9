#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelpSimulator/ProcessScreen.h"

namespace VorselKelp::simulator {

struct WindowScreenOptions {
  /// Real beacons, by the machine's Bluetooth adapter, in place of those of the simulated device.
  bool bluetoothBeacons = false;
};

/// A window on the user's desktop, with GTK, and web pages in WebKitGTK:
///   runApplication(argc, argv, application, operations, *VorselKelp::makeWindowScreen());
/// Opening it fails where there is no display.
VORSELKELP_API std::shared_ptr<ProcessScreen> makeWindowScreen(WindowScreenOptions options = {});

}  // namespace VorselKelp::simulator
