#pragma once

#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {

/// Where everything of one simulated device lies. All folders are below the home; names that come from
/// outside are made safe, so none of them leads out of it. A home that is missing is made for its owner
/// alone.
class VORSELKELP_API DeviceHome {
 public:
  /// `path` is made absolute against the current folder.
  explicit DeviceHome(const std::string& path);

  [[nodiscard]] const std::string& path() const { return path_; }
  /// What the device knows about itself: its clock, and the applications' tokens.
  [[nodiscard]] std::string deviceFile() const { return path_ + "/device.json"; }
  [[nodiscard]] std::string groupContainers() const { return path_ + "/groups"; }
  /// The store of the process's own domain.
  [[nodiscard]] std::string standardDefaults(const Manifest& manifest, ProcessKind kind) const;
  [[nodiscard]] std::string temporaryFolder(const Manifest& manifest, ProcessKind kind) const;

 private:
  [[nodiscard]] std::string container(const Manifest& manifest, ProcessKind kind) const;
  std::string path_;
};

}  // namespace VorselKelp::simulator
