#pragma once

#include <cstdint>
#include <vector>

#include "VorselKelp/VorselNotificationView.h"

namespace VorselKelp {

/// Where title, body and image of a message stand, by its layout code; none for a code without a layout.
[[nodiscard]] std::vector<ui::Constraint> messageConstraints(VorselNotificationView& view,
                                                             std::int64_t layoutCode);

/// Where the three buttons stand.
[[nodiscard]] std::vector<ui::Constraint> buttonConstraints(VorselNotificationView& view);

}  // namespace VorselKelp
