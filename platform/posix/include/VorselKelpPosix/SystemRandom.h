#pragma once

#include <cstddef>
#include <string>

#include "VorselKelp/Export.h"

namespace VorselKelp::posix {

/// `count` bytes of the system's random source; the process stops when the system has none to give.
VORSELKELP_API std::string randomBytes(std::size_t count);

}  // namespace VorselKelp::posix
