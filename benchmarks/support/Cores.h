#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// Delivers pushes to many cores in one process, prints how fast that goes, and answers what one core costs.
[[nodiscard]] Line coresSideBySide();

}  // namespace VorselKelp::benchmarks
