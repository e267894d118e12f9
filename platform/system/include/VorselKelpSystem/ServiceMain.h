#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/Process.h"
#include "VorselKelpSystem/ServiceExtension.h"

namespace VorselKelp::system {

/// What a service extension has to know about its application. All folders are absolute; they are made when
/// they are needed.
struct ServiceDescription {
  std::string
      application;      ///< the application's identifier; the extension's is that with ".service" behind it
  std::string version;  ///< the application's
  BundleTexts properties;  ///< further entries of the application's property list, for the extension's too
  std::optional<Machine> machine;  ///< none: the one that the process runs on
  platform::Endpoints endpoints;
  std::vector<std::string> groups;  ///< the application's groups, which its processes share
  std::string groupContainers;      ///< the folder in which each group has one of its own, for all processes
  std::string container;            ///< the folder of the extension's own store and temporary files
  std::string notifications;        ///< the folder of the notification store, for all processes
};

/// What follows from the application's description, on the machine that the process runs on: folders by
/// foldersOf().
VORSELKELP_API ServiceDescription serviceDescriptionOf(const Description& description);

/// A service extension's main function, for a program that a Delivery runs: reads the payload from standard
/// input, installs the process's platform in the library, hands the notification to `extension`, and writes
/// the content to standard output. What else the process prints there goes to standard error. Answers the
/// exit status: 0, 1 when the payload can't be read, 2 for a command line that says nothing sensible.
///
///   --id ID            the notification's identifier
///   --time-limit S     the extension's time (default 30)
///
/// The process lives until the handler was called and its own requests have ended, at most its time.
VORSELKELP_API int runServiceMain(int argc, const char* const* argv, const ServiceDescription& description,
                                  ServiceExtension& extension);

}  // namespace VorselKelp::system
