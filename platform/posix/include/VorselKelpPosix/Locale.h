#pragma once

#include <string>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// The language in which the user reads messages, such as "de"; "en" where the environment's locale names
/// none. Any thread.
[[nodiscard]] VORSELKELP_API std::string userLanguage();

/// Seconds that the local time is ahead of GMT now; negative in the west. Any thread.
[[nodiscard]] VORSELKELP_API int secondsFromGMT();

}  // namespace VorselKelp::posix
