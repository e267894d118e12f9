#pragma once

#include <string_view>

#include "core/CoreContext.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// The step that comes after a notification was opened: while an ad is pending, its event endpoint hears of
/// it. The answer changes nothing.
void followUpAd(CoreContext& context, VorselRequest& requests);

/// Whether it comes after the tap on a notification or on one of its buttons.
[[nodiscard]] bool adFollows(std::string_view action);

}  // namespace VorselKelp
