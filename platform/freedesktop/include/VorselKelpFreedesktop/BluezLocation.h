#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/LocationManager.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::freedesktop {

/// Beacons that the machine's Bluetooth adapter hears, through BlueZ on the system bus. The adapter starts
/// looking with the first region that is watched and stops when the last manager is gone.
///
/// A region is entered when a beacon with its proximity UUID is heard, and left when none was for 30 seconds
/// (up to one second late). A watched region's beacons are told once a second, also when there are none. The
/// state is "inside" as soon as a beacon was heard; without one it is told 5 seconds later: "outside", or
/// "unknown" while nothing can be heard. Places are never found. What keeps the adapter from looking (no bus,
/// no adapter, switched off) is a line on standard error; it looks again when that changes.
///
/// Time is the main queue's. The main thread has to run the default main context of GLib. `busAddress` empty:
/// the system's bus.
VORSELKELP_API std::shared_ptr<platform::LocationServices> makeBluezLocation(
    std::shared_ptr<platform::MainQueue> mainQueue, std::string busAddress = {});

}  // namespace VorselKelp::freedesktop
