#pragma once

#include <string_view>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// Writes everything, in one write where the system takes it; false when the reader is gone or the disk is
/// full.
VORSELKELP_API bool writeAll(int descriptor, std::string_view bytes);

}  // namespace VorselKelp::posix
