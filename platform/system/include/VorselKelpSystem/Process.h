#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/BundleInformation.h"
#include "VorselKelp/platform/Device.h"

namespace VorselKelp::system {

using BundleTexts = std::map<std::string, std::string, std::less<>>;

/// What a process's bundle says: `texts` of its own, identifier and version.
VORSELKELP_API std::shared_ptr<platform::BundleInformation> makeBundle(const std::string& identifier,
                                                                       const std::string& version,
                                                                       BundleTexts texts = {});

/// What the device is.
struct Machine {
  std::string identifier;  ///< such as "iPhone13,2"
  std::string systemName = "iOS";
  std::string systemFamily = "iOS";
  std::string manufacturer = "Apple";
  std::optional<std::string> productName;  ///< absent: the one that goes with the identifier
  std::string systemVersion;
  double screenWidth = 0;   ///< points; wider than high means that it lies on its side
  double screenHeight = 0;  ///< points
};

/// Language, time zone and variables come from the environment of the process.
VORSELKELP_API std::shared_ptr<platform::Device> makeDevice(const Machine& machine);

/// A screen that nobody looks at: it has a size and is never refreshed.
VORSELKELP_API std::shared_ptr<platform::Screen> makeScreen(const Machine& machine);

}  // namespace VorselKelp::system
