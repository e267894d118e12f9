#pragma once

#include <string_view>

namespace VorselKelp::linux_platform {

/// Writes everything, in one write where the system takes it; false when the reader is gone or the disk is
/// full.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace VorselKelp::linux_platform
