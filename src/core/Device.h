#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "VorselKelp/platform/Device.h"
#include "core/Model.h"

namespace VorselKelp {

/// Tells what hardware the process runs on, as the name that the servers know.
class Device {
 public:
  Device();

  /// The display name for a machine identifier, "Unrecognized" for one that is not in the table. Exact and
  /// case-sensitive.
  [[nodiscard]] std::string_view modelName(std::string_view machineIdentifier) const;

 private:
  std::unordered_map<std::string_view, Model> modelMap_;
};

/// What the hardware calls itself, or what a simulator says that it stands for. Hardware that calls itself by
/// other than ASCII characters stops the process.
[[nodiscard]] std::string machineIdentifier(platform::Device& device);

}  // namespace VorselKelp
