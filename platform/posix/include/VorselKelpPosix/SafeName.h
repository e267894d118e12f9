#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// A single path component for any text: letters, digits, '-', '_' and inner full stops stay, every other
/// byte becomes %XX. Different texts get different names; a text too long for a file name keeps its beginning
/// and gets a hash. Never empty, never hidden, at most 180 bytes, so that suffixes fit.
[[nodiscard]] VORSELKELP_API std::string safeName(std::string_view text);

}  // namespace VorselKelp::posix
