#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"

namespace brellixctl {

/// A folder that goes with its object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  /// Empty when none could be made.
  [[nodiscard]] const std::string& path() const { return path_; }

  /// The path of a file of this name that holds `json`.
  [[nodiscard]] std::string write(const std::string& name, const VorselKelp::JSONAny& json) const;
  /// The same with these bytes.
  [[nodiscard]] std::string writeText(const std::string& name, const std::string& text) const;

 private:
  std::string path_;
};

// What the demonstration's application and its publisher write, with every address at `server`.

/// The application's manifest; through the facade when `layer` says so.
VorselKelp::JSONAny demoManifest(const std::string& server, const char* layer);
/// A push of one message, with a picture, buttons and trackers.
VorselKelp::JSONAny demoPush(const std::string& server);
/// A push of three messages for the carousel.
VorselKelp::JSONAny demoCarousel(const std::string& server);

}  // namespace brellixctl
