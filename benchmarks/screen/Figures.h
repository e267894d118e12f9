#pragma once

#include <optional>

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// From handing the permission page over to hearing its message, beside a bare program of the engine's.
/// Absent where there is no display.
std::optional<Line> promptMessage();

}  // namespace VorselKelp::benchmarks
