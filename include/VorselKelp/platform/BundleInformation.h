#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp::platform {

/// The information dictionaries of the process's bundles: what a phone keeps in property lists. Values never
/// change while the process lives. Any thread.
class BundleInformation {
 public:
  virtual ~BundleInformation() = default;

  /// The text under `key` in the main bundle (the application's in the application, the extension's own in an
  /// extension). Absent when missing or not a text. The library asks for "CFBundleIdentifier"
  /// and "CFBundleShortVersionString" (reports tell them; a carousel with arrows of its own needs the first),
  /// "VorselKellpApiKey" (the API key, where the builder is given none) and "VorselKellpTrackID" (the ad
  /// feed's identifier: without it no interstitial is asked for).
  virtual std::optional<std::string> mainBundleText(std::string_view key) = 0;

  /// The same of the bundle that holds this library; the library asks for "CFBundleShortVersionString".
  virtual std::optional<std::string> libraryBundleText(std::string_view key) = 0;

  /// The bytes of a file that comes with the library, in its bundle "com.vorsel.kellp": "left2.png" and
  /// "right2.png". Absent when it was not installed. Blocks for the file system.
  virtual std::optional<std::string> libraryResource(std::string_view name) = 0;
};

}  // namespace VorselKelp::platform
