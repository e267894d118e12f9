#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// The system calls of the service extension with a text-only push, from exec to exit, beside those of the
/// bare program of the same linkage.
[[nodiscard]] Line serviceExtensionSystemCalls();

/// Peak memory of the service extension with a text-only push, beside that of the bare program of the same
/// linkage.
[[nodiscard]] Line serviceExtensionMemory();

/// Peak memory of the service extension that attaches a baseline JPEG of 10 MB and 48 megapixels.
[[nodiscard]] Line serviceExtensionImageMemory();

}  // namespace VorselKelp::benchmarks
