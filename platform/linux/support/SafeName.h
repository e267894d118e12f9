#pragma once

#include <string>
#include <string_view>

namespace VorselKelp::linux_platform {

/// A single path component for any text: letters, digits, '-', '_' and inner full stops stay, every other
/// byte becomes %XX. Different texts get different names; a text too long for a file name keeps its beginning
/// and gets a hash. Never empty, never hidden, at most 180 bytes, so that suffixes fit.
[[nodiscard]] std::string safeName(std::string_view text);

}  // namespace VorselKelp::linux_platform
