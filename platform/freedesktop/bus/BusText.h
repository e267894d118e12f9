#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VorselKelp::freedesktop {

/// `text` as the bus takes it: its first `limit` bytes at most, cut between characters, with every byte that
/// is no UTF-8 (and every NUL) replaced by U+FFFD.
[[nodiscard]] std::string busText(std::string_view text, std::size_t limit);

}  // namespace VorselKelp::freedesktop
