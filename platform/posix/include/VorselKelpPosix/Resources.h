#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// The bytes of a file that comes with the library (at most 1 MiB), from the first folder that has it.
/// `name` is a plain file name; others are not found.
VORSELKELP_API std::optional<std::string> readResource(std::string_view name);

}  // namespace VorselKelp::posix
