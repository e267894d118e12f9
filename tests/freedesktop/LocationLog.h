#pragma once

#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/platform/LocationManager.h"

namespace VorselKelp::freedesktop {

/// Puts down what a location manager tells.
class LocationLog final : public platform::LocationManagerDelegate {
 public:
  void didEnterRegion(const platform::Region& region) override {
    lines.push_back("enter " + region.identifier);
  }
  void didExitRegion(const platform::Region& region) override {
    lines.push_back("exit " + region.identifier);
  }
  void didDetermineState(platform::RegionState state, const platform::Region& region) override {
    const char* const words[] = {"unknown ", "inside ", "outside "};
    lines.push_back(words[static_cast<int>(state)] + region.identifier);
  }
  void didRangeBeacons(const std::vector<platform::Beacon>& beacons,
                       const platform::Region& region) override {
    std::string line = "range " + region.identifier;
    for (const auto& beacon : beacons)
      line += " " + std::to_string(beacon.major) + "." + std::to_string(beacon.minor);
    lines.push_back(line);
  }

  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;
};

}  // namespace VorselKelp::freedesktop
