#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VorselKelp::json {

/// The JSON text without what its lists and objects at the level `levels` hold, so that a text of any depth
/// can be parsed for what stands above. A text whose brackets don't match comes back as it is.
[[nodiscard]] std::string shallow(std::string_view text, std::size_t levels);

}  // namespace VorselKelp::json
