#pragma once

#include <optional>

#include "core/CoreContext.h"
#include "core/SessionValues.h"

namespace VorselKelp {

/// Counts a session, makes its id, and on the installation's first one the installation's unique id.
void runSessionStep(CoreContext& context);

/// The stored values; absent unless all four are there. Where the store refused them all, those of the
/// session that this process has counted.
[[nodiscard]] std::optional<SessionValues> readSessionValues(CoreContext& context);

}  // namespace VorselKelp
