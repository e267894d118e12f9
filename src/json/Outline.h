#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VorselKelp::json {

// What a parsed document no longer tells of its text. Both take any text; of one that is no JSON they tell
// what they understand.

/// The path of each key that stands more than once in its object, in order.
[[nodiscard]] std::vector<std::string> duplicateKeys(std::string_view text);

/// The path of the first list or object at a deeper level than `levels`; absent when there is none.
[[nodiscard]] std::optional<std::string> placeBeyond(std::string_view text, std::size_t levels);

}  // namespace VorselKelp::json
