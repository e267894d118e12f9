#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelpLinux/DeviceHome.h"
#include "VorselKelpLinux/Manifest.h"
#include "VorselKelpLinux/SimulatedDevice.h"

namespace brellixctl {

/// The device and the application that a command is about.
struct Target {
  std::string homePath;
  std::string manifestPath;
  VorselKelp::linux_platform::Manifest manifest;
  VorselKelp::linux_platform::DeviceHome home;

  /// An error says in one line what is wrong with either.
  static VorselKelp::Result<Target> open(const std::string& homePath, const std::string& manifestPath);
  [[nodiscard]] VorselKelp::linux_platform::SimulatedDevice device() const {
    return {home, manifest.bundleIdentifier};
  }
};

/// An operation that failed carries this code when it was asked for in a wrong way.
inline constexpr int wrongUsage = 2;

struct LaunchRequest {
  std::string answer;  ///< "allow", "deny" or empty
  std::vector<std::string> calls;
  std::vector<std::string> beacons;  ///< events, before the calls
  double timeLimit = 20;
};

struct LaunchOutcome {
  bool initialised = false;
  std::string authorisation;
  std::optional<std::string> token;  ///< hexadecimal
  std::vector<VorselKelp::JSONAny> delegate;
  std::vector<VorselKelp::JSONAny> results;  ///< one a call; null for those that were not made
  bool complete = true;                      ///< every call was made before the time ended
  std::vector<VorselKelp::JSONAny> console;
  std::vector<std::string> errorLines;
};

VorselKelp::Result<LaunchOutcome> launch(const Target& target, const LaunchRequest& request);

struct PushRequest {
  std::string payloadPath;
  std::string identifier;  ///< empty: one is made
  double timeLimit = 30;
};

struct PushOutcome {
  VorselKelp::platform::NotificationRequest shown;
  std::vector<VorselKelp::platform::NotificationAction> actions;
  std::string extension;  ///< answered, silent, timeLimit, stopped or notRun
  std::vector<VorselKelp::JSONAny> console;
  std::vector<std::string> errorLines;
};

VorselKelp::Result<PushOutcome> push(const Target& target, const PushRequest& request);

struct TapRequest {
  std::string identifier;
  std::optional<std::string> action;  ///< a button's identifier; absent for the notification itself
  bool handle = true;
};

struct TapOutcome {
  std::optional<VorselKelp::JSONAny> completion;  ///< absent when it was not called
  std::optional<VorselKelp::JSONAny> browser;
  std::optional<VorselKelp::JSONAny> deepLink;
  std::vector<VorselKelp::JSONAny> console;
  std::vector<std::string> errorLines;
};

VorselKelp::Result<TapOutcome> tap(const Target& target, const TapRequest& request);

}  // namespace brellixctl
