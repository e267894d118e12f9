#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// Peak memory of the service extension with a text-only push, beside the bare program's.
[[nodiscard]] Line serviceExtensionMemory();

/// Peak memory of the service extension that attaches a baseline JPEG of 10 MB and 48 megapixels.
[[nodiscard]] Line serviceExtensionImageMemory();

}  // namespace VorselKelp::benchmarks
