#pragma once

#include <functional>
#include <string_view>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// Takes one complaint, a whole line without its end. Called from any thread, one call at a time per service.
using LineSink = std::function<void(std::string_view line)>;

/// Writes each line to standard error with a single write, so that lines of several processes never mix.
[[nodiscard]] VORSELKELP_API LineSink standardErrorLines();

}  // namespace VorselKelp::posix
