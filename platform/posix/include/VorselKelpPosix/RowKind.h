#pragma once

#include <cstdint>

namespace VorselKelp::posix {

/// What a row's value is. The numbers are written into databases; they never change.
enum class RowKind : std::int64_t { boolean = 0, integer = 1, real = 2, text = 3, list = 4, map = 5 };

}  // namespace VorselKelp::posix
