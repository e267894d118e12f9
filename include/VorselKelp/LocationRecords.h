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

}  // namespace VorselKelp
