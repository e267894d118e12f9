#pragma once

#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelpSimulator/Arrivals.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSimulator/Runtime.h"
#include "VorselKelpSimulator/SimulatedDevice.h"

namespace phone {

/// A simulated device and one application on it.
struct Target {
  std::string homePath;
  std::string manifestPath;
  VorselKelp::simulator::Manifest manifest;
  VorselKelp::simulator::DeviceHome home;

  /// An error says in one line what is wrong with either.
  static VorselKelp::Result<Target> open(const std::string& homePath, const std::string& manifestPath);
  /// The same without a look at the device, which need not be there.
  static VorselKelp::Result<Target> describe(const std::string& homePath, const std::string& manifestPath);
  [[nodiscard]] VorselKelp::simulator::SimulatedDevice device() const {
    return {home, manifest.bundleIdentifier};
  }
  /// What has come to the application and is not delivered yet.
  [[nodiscard]] VorselKelp::simulator::Arrivals arrivals() const { return {home, manifest.bundleIdentifier}; }
  /// The executable of one of the application's processes: an absolute path, or a name beside this
  /// executable.
  [[nodiscard]] std::string program(VorselKelp::simulator::ProcessKind kind) const;
};

/// An operation that failed carries this code when it was asked for in a wrong way.
inline constexpr int wrongUsage = 2;

}  // namespace phone
