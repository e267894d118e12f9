#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelpSimulator/DeviceServices.h"
#include "VorselKelpSimulator/HeadlessScreen.h"
#include "VorselKelpSimulator/LocationService.h"

namespace VorselKelp::simulator {

/// The command line of a process of the simulated device. It is read by hand: an extension starts for every
/// single notification.
struct ProcessOptions {
  struct Tap {
    std::string identifier;
    std::optional<std::string> action;  ///< a button's identifier; absent for the notification itself
    bool handle = true;
  };

  std::string home;
  std::string manifest;
  std::optional<int> channel;
  std::optional<double> timeLimit;  ///< seconds
  DialogAnswer answer = DialogAnswer::none;
  std::vector<std::pair<std::string, std::string>> calls;  ///< name and JSON text
  std::vector<BeaconEvent> beacons;
  std::optional<Tap> tap;
  std::string notify;  ///< a notification to show on the desktop; empty: none
  PromptAnswer promptAnswer = PromptAnswer::none;
  std::string scriptHost;         ///< in place of the manifest's; empty: the manifest's
  bool background = false;        ///< started for the payload, which is silent
  bool stay = false;              ///< until the user closes the window
  std::string pictures;           ///< a folder for pictures of the screens; empty: none are taken
  std::vector<std::string> acts;  ///< "right", "left" or "open"
  std::string png;                ///< a file
  std::string payload;            ///< a file; empty for standard input
  std::string identifier;
};

/// An error is one line that says what to do.
Result<ProcessOptions> readOptions(int argc, const char* const* argv);

}  // namespace VorselKelp::simulator
