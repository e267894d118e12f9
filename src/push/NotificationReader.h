#pragma once

#include <memory>
#include <optional>

#include "core/CoreContext.h"
#include "push/PayloadDecoder.h"

namespace VorselKelp {

/// Decodes what a request carries, single message or campaign, for the content extension. A request that
/// can't be read yields nothing, and a line that says why unless its information is no JSON object.
[[nodiscard]] std::optional<NotificationObject> readNotification(
    const CoreContext& context, const platform::NotificationRequest& request);

}  // namespace VorselKelp
