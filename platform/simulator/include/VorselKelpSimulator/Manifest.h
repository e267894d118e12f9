#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::simulator {

/// What a phone learns of an application from its bundle and of itself from its hardware, and what the
/// application would know at compile time: one JSON file for all processes of the application.
struct Manifest {
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

  /// Executables, for whoever starts the application's processes; empty: the example application's.
  struct Programs {
    std::string application;
    std::string service;
    std::string content;
  };

  std::string bundleIdentifier;
  std::string version = "1.0";
  std::string machine = "iPhone13,2";
  std::string systemVersion = "17.4";
  double screenWidth = 390;   ///< points
  double screenHeight = 844;  ///< points
  Layer layer = Layer::core;
  std::optional<std::string> apiKey;
  std::optional<std::string> appGroupId;
  /// The application groups that the device knows.
  std::vector<std::string> groups;
  /// The categories for which the device starts the content extension.
  std::vector<std::string> contentCategories{"vs_contentExt"};
  Switches switches;
  std::optional<double> schedule;  ///< seconds
  std::optional<Publisher> publisher;
  /// Further entries of the application's property list; values that are no texts are left out.
  std::map<std::string, std::string, std::less<>> properties;
  platform::Endpoints endpoints;
  /// Keys that mean nothing to anybody, with their paths, such as "switches.pusch".
  std::vector<std::string> unknownKeys;
  /// As the file has them; loadManifest() makes relative ones absolute, against the file's folder.
  Programs programs;
};

/// Reads a manifest. An error names the file and the key that is wrong.
VORSELKELP_API Result<Manifest> loadManifest(const std::string& path);

/// The same from the file's text.
VORSELKELP_API Result<Manifest> parseManifest(std::string_view text);

}  // namespace VorselKelp::simulator
