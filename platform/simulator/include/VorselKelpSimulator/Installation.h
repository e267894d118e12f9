#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/Manifest.h"

namespace VorselKelp::simulator {

/// Removes the application from the device: its token, notifications, undelivered pushes, permission and
/// folders. The containers of its groups go with the last application of the device. What an interrupted one
/// left is removed by the next. No process of the application may run.
VORSELKELP_API Status uninstall(const DeviceHome& home, const Manifest& manifest);

}  // namespace VorselKelp::simulator
