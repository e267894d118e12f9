#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "core/Model.h"

namespace VorselKelp {

/// Tells what hardware the process runs on, as the name that the servers know.
class Device {
 public:
  Device();

  /// The display name for a machine identifier, "Unrecognized" for one that is not in the table. Exact and
  /// case-sensitive. An identifier with a byte above 127 stops the process.
  [[nodiscard]] std::string_view modelName(std::string_view machineIdentifier) const;

 private:
  std::unordered_map<std::string_view, Model> modelMap_;
};

}  // namespace VorselKelp
