#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// Peak memory of the service extension with a text-only push, beside the bare program's.
[[nodiscard]] Line serviceExtensionMemory();

}  // namespace VorselKelp::benchmarks
