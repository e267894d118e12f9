#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelpSystem/Description.h"

namespace VorselKelp::simulator {

/// What a phone learns of an application from its bundle and of itself from its hardware, and what the
/// application would know at compile time: its description with some members more, one JSON file for all
/// processes of the application. Programs that it does not name are the example application's.
struct Manifest : system::Description {
  enum class Layer { core, facade };

  /// A service switch that the file does not mention is absent: the stored value of an earlier start then
  /// stays.
  struct Switches {
    std::optional<bool> push, analytics, beacon, custom, crash, geofence, location, adex;
  };

  struct Publisher {
    std::string id;
    std::string source;
  };

  std::string machine = "iPhone13,2";
  std::string systemVersion = "17.4";
  double screenWidth = 390;   ///< points
  double screenHeight = 844;  ///< points
  Layer layer = Layer::core;
  /// The categories for which the device starts the content extension.
  std::vector<std::string> contentCategories{"vs_contentExt"};
  Switches switches;
  std::optional<double> schedule;  ///< seconds
  std::optional<Publisher> publisher;
  /// Keys that mean nothing to anybody, with their paths, such as "switches.pusch".
  std::vector<std::string> unknownKeys;
};

/// Reads a manifest. An error names the file and the key that is wrong.
VORSELKELP_API Result<Manifest> loadManifest(const std::string& path);

/// The same from the file's text.
VORSELKELP_API Result<Manifest> parseManifest(std::string_view text);

}  // namespace VorselKelp::simulator
