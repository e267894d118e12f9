#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp::json {

/// Where a text stops being JSON.
struct JSONFault {
  std::size_t offset = 0;  ///< bytes
  std::string what;
};

/// Whether a byte of UTF-8 is the first of its character.
[[nodiscard]] inline bool beginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// The first fault of a text that does not parse; absent when only a number's size can be at fault.
[[nodiscard]] std::optional<JSONFault> findJSONFault(std::string_view text);

}  // namespace VorselKelp::json
