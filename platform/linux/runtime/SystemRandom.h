#pragma once

#include <cstddef>
#include <string>

namespace VorselKelp::linux_platform {

/// `count` bytes of the system's random source; the process stops when the system has none to give.
std::string randomBytes(std::size_t count);

}  // namespace VorselKelp::linux_platform
