#pragma once

#include <string_view>

namespace VorselKelp {

/// The one way in which this library stops its process on purpose: writes "Fatal error: " and the message as
/// a line to standard error and aborts.
[[noreturn]] void fatalError(std::string_view message);

}  // namespace VorselKelp
