#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VorselKelp {

/// One geofence as the push server sends it.
struct Gl {
  std::vector<std::string> c;  ///< definition values
  std::optional<std::string> e;
  std::optional<bool> er;
  std::optional<bool> lr;
  std::optional<std::int64_t> r;
  std::string id;  ///< what `enteredGeofenceRegionWith` reports
  friend bool operator==(const Gl&, const Gl&) = default;
};

struct Geofences {
  std::vector<Gl> gl;
};

/// One beacon region as the push server sends it.
struct B {
  std::string id;  ///< what `enteredBeaconRegionWith` reports
  std::string ib;  ///< the beacon's identifier
  std::optional<std::int64_t> major;
  std::optional<std::int64_t> minor;
  std::optional<std::int64_t> distance;
  friend bool operator==(const B&, const B&) = default;
};

struct Beacons {
  std::vector<B> bl;
};

}  // namespace VorselKelp
