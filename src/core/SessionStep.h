#pragma once

#include <optional>

#include "core/CoreContext.h"
#include "core/SessionValues.h"

namespace VorselKelp {

/// Counts a session, makes its id, and on the installation's first one the installation's unique id. `rest`
/// is stored in the same step of the store. The clock is read before that, for a clock may take its time; one
/// that tells no time stops the process, and nothing is counted.
void runSessionStep(CoreContext& context, platform::FunctionRef<void()> rest);

/// The stored values; absent unless all four are there. Where the store refused them all, those of the
/// session that this process has counted.
[[nodiscard]] std::optional<SessionValues> readSessionValues(CoreContext& context);

}  // namespace VorselKelp
