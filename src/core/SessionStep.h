#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Counts a session, makes its id, and on the installation's first one the installation's unique id.
void runSessionStep(CoreContext& context);

/// The stored values that every report carries of its session.
struct SessionValues {
  std::int64_t number = 0;
  std::string id;
  std::int64_t visitedCount = 0;
  std::string uniqueId;
};

/// Absent unless all four are stored.
[[nodiscard]] std::optional<SessionValues> readSessionValues(CoreContext& context);

}  // namespace VorselKelp
