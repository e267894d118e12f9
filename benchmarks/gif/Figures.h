#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// What an animation takes of the heap while it plays, its file left out.
[[nodiscard]] Line gifMemory();

}  // namespace VorselKelp::benchmarks
