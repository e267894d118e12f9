#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VorselKelp::platform {

/// A region that the system watches. With a proximity UUID it is a beacon region, else a place.
struct Region {
  std::string identifier;
  std::optional<std::string> proximityUUID;  ///< upper-case hexadecimal with hyphens
  friend bool operator==(const Region&, const Region&) = default;
};

/// A beacon in range.
struct Beacon {
  std::string proximityUUID;  ///< upper-case hexadecimal with hyphens
  std::uint16_t major = 0;
  std::uint16_t minor = 0;
};

enum class RegionState { unknown, inside, outside };

/// Hears what a location manager finds. Called on the main thread.
class LocationManagerDelegate {
 public:
  virtual ~LocationManagerDelegate() = default;
  virtual void didEnterRegion(const Region& region) = 0;
  virtual void didExitRegion(const Region& region) = 0;
  virtual void didDetermineState(RegionState state, const Region& region) = 0;
  virtual void didRangeBeacons(const std::vector<Beacon>& beacons, const Region& region) = 0;
};

/// Watches regions for as long as it lives. Operations may be called from any thread and return at once; what
/// the system can't do or the user does not allow finds nothing.
class LocationManager {
 public:
  virtual ~LocationManager() = default;
  /// Held weakly.
  virtual void setDelegate(std::weak_ptr<LocationManagerDelegate> delegate) = 0;
  /// Asks the user, the first time, to allow watching at all times.
  virtual void requestAlwaysAuthorization() = 0;
  virtual void startMonitoring(const Region& region) = 0;
  virtual void startRangingBeacons(const Region& region) = 0;
  /// The state comes to the delegate later.
  virtual void requestState(const Region& region) = 0;
};

/// Makes location managers.
class LocationServices {
 public:
  virtual ~LocationServices() = default;
  /// Never null; each one is the caller's alone.
  virtual std::shared_ptr<LocationManager> makeLocationManager() = 0;
};

}  // namespace VorselKelp::platform
