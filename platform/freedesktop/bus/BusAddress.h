#pragma once

#include <string>

#include "VorselKelp/Result.h"

namespace VorselKelp::freedesktop {

enum class BusKind { session, system };

/// Where the bus of this kind listens, by the environment or by custom. None is ever started: a bus that was
/// made for this process alone has nobody on it.
[[nodiscard]] Result<std::string> busAddress(BusKind kind);

}  // namespace VorselKelp::freedesktop
