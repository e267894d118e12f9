#pragma once

#include <cstddef>
#include <string>

namespace VorselKelp::agent {

/// A text from outside as the bus takes it: UTF-8, what is none replaced, and of `limit` bytes at most, cut
/// between characters.
[[nodiscard]] std::string shortText(const std::string& text, std::size_t limit);

}  // namespace VorselKelp::agent
