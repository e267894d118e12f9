#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/LocationManager.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::simulator {

/// Something that happens between the simulated device and the beacons around it.
struct BeaconEvent {
  enum class Kind { enter, exit, inside, range };
  Kind kind = Kind::enter;
  std::vector<std::string> proximityUUIDs;  ///< upper-case; of a range event each beacon's, else just one
};

/// Reads "enter:UUID", "exit:UUID", "inside:UUID" or "range:UUID,UUID". An error is one line.
VORSELKELP_API Result<BeaconEvent> parseBeaconEvent(std::string_view text);

/// The location service of one process. The user allows everything. Managers are held weakly, and each hears
/// of its own regions only. Any thread, unless said otherwise.
class DeviceLocation : public platform::LocationServices {
 public:
  /// Tells the managers' delegates; of a range event each ranged region gets its own beacons. Answers whether
  /// any manager watches what the event is about. Main thread.
  virtual bool happen(const BeaconEvent& event) = 0;
};

/// On `mainQueue` delegates hear the states that they asked for.
VORSELKELP_API std::shared_ptr<DeviceLocation> makeLocation(std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::simulator
