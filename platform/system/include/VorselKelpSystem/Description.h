#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::system {

class ObjectReader;

/// What all processes of an application know of it: one JSON object in one file, by convention named after
/// the identifier. docs/integration.md tells its keys.
struct Description {
  /// Executables; empty: none of the application's own.
  struct Programs {
    std::string application;
    std::string service;
    std::string content;
  };

  /// How remote notifications come, on a desktop.
  struct RemoteNotifications {
    /// The one to use of several distributors, with or without "org.unifiedpush.Distributor." before it;
    /// empty: the first by its name.
    std::string distributor;
    std::string vapidKey;    ///< the sender's public key, 87 characters of base64url; empty: any sender
    bool plaintext = false;  ///< they may come unencrypted, from whoever knows the endpoint
  };

  std::string
      bundleIdentifier;  ///< the application's, also the name of its desktop entry; "com.example.reader"
  std::string name;      ///< as the user reads it; the identifier when the file has none
  std::string version = "1.0";
  std::optional<std::string> apiKey;
  std::optional<std::string> appGroupId;
  /// The groups whose stores the application may use.
  std::vector<std::string> groups;
  /// Further entries of the application's property list; values that are no texts are left out.
  std::map<std::string, std::string, std::less<>> properties;
  platform::Endpoints endpoints;
  /// As the file has them; loadDescription() makes relative ones absolute, against the file's folder.
  Programs programs;
  RemoteNotifications remoteNotifications;
};

/// Reads a description. An error names the file and the key that is wrong; unknown keys are left alone.
VORSELKELP_API Result<Description> loadDescription(const std::string& path);

/// The same from the file's text.
VORSELKELP_API Result<Description> parseDescription(std::string_view text);

/// The file of an application that is installed: `<identifier>/<identifier>.json` where shared data lies,
/// beside this program first. That path below "share" when it is nowhere, for loadDescription() to say so.
VORSELKELP_API std::string installedDescription(const std::string& identifier);

/// For files that hold more than a description: takes its members out of the object. What is wrong is the
/// reader's to say.
VORSELKELP_API void readDescription(ObjectReader& reader, Description& description);

/// Makes relative programs absolute, against the folder of the file that names them.
VORSELKELP_API void makeProgramsAbsolute(Description::Programs& programs, const std::string& file);

/// Where an application keeps things on a desktop; in a sandbox below what that gives it. Made when they are
/// needed.
struct Folders {
  std::string
      groupContainers;  ///< each group has a folder of its own in it, for all processes and applications
  std::string data;     ///< of the application's own
  std::string notifications;  ///< of its notification store
  std::string temporary;      ///< for passing files
};

/// By XDG_DATA_HOME and XDG_CACHE_HOME, where the environment has none by HOME.
VORSELKELP_API Folders foldersOf(const Description& description);

}  // namespace VorselKelp::system
