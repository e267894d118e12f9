#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/Process.h"

namespace VorselKelp::system {

/// What an extension's process has to know about its application and itself. All folders are absolute; they
/// are made when they are needed.
struct ExtensionDescription {
  std::string application;  ///< the application's identifier
  std::string identifier;   ///< the extension's own
  std::string version;      ///< the application's
  BundleTexts properties;   ///< further entries of the application's property list, for the extension's too
  std::optional<Machine> machine;  ///< none: the one that the process runs on
  platform::Endpoints endpoints;
  std::vector<std::string> groups;  ///< the application's groups, which its processes share
  std::string groupContainers;      ///< the folder in which each group has one of its own, for all processes
  std::string container;            ///< the folder of the extension's own store and temporary files
  std::string notifications;        ///< the folder of the notification store, for all processes
};

/// What follows from the application's description, with folders by foldersOf(). The extensions' identifiers
/// are the application's with ".service" or ".content" behind it.
VORSELKELP_API ExtensionDescription serviceDescriptionOf(const Description& description);
VORSELKELP_API ExtensionDescription contentDescriptionOf(const Description& description);

}  // namespace VorselKelp::system
