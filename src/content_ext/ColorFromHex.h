#pragma once

#include <string_view>

#include "VorselKelp/ui/Appearance.h"

namespace VorselKelp {

/// "#aarrggbb", "#rrggbb" or "#rgb", with anything but letters and digits around the digits. A text of
/// another length is opaque black; what follows a character that is no digit is not read.
[[nodiscard]] ui::Color colorFromHex(std::string_view text);

}  // namespace VorselKelp
