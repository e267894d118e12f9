#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

inline constexpr std::size_t saltSize = 16;
inline constexpr std::size_t tagSize = 16;

/// The first record of a message: `content`, which is the text with its delimiter and padding, encrypted, and
/// the tag behind it.
Result<std::string> sealRecord(std::string_view content, std::string_view secret, std::string_view salt);

/// The content of such a record; an error when its tag says that it was not sealed so.
Result<std::string> openRecord(std::string_view record, std::string_view secret, std::string_view salt);

}  // namespace VorselKelp::webpush
