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
  /// What the device knows about itself: its clock, whether it is off, and the applications' tokens.
  [[nodiscard]] std::string deviceFile() const { return path_ + "/device.json"; }
  [[nodiscard]] std::string groupContainers() const { return path_ + "/groups"; }
  /// The pushes to an application that are not delivered yet.
  [[nodiscard]] std::string arrivals(const std::string& application) const;
  /// All that one process of an application has for itself.
  [[nodiscard]] std::string container(const Manifest& manifest, ProcessKind kind) const;
  /// The store of the process's own domain.
  [[nodiscard]] std::string standardDefaults(const Manifest& manifest, ProcessKind kind) const;
  [[nodiscard]] std::string temporaryFolder(const Manifest& manifest, ProcessKind kind) const;

 private:
  std::string path_;
};

}  // namespace VorselKelp::simulator
