#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// Where a file of shared data lies, `path` below "share": of the prefix that this program was installed
/// under, of the library's, then of the system's, by XDG_DATA_DIRS; absent when none has it.
VORSELKELP_API std::optional<std::string> findSharedFile(std::string_view path);

/// The bytes of a file that comes with the library (at most 1 MiB), from the first folder that has it.
/// `name` is a plain file name; others are not found.
VORSELKELP_API std::optional<std::string> readResource(std::string_view name);

}  // namespace VorselKelp::posix
