#pragma once

#include "support/Table.h"

namespace VorselKelp::benchmarks {

/// The first `initialize` of a process, with the store's opening, beside bare SQLite doing the same.
[[nodiscard]] Line firstInitialize();

/// The 99th percentile of `initialize`, beside that of the bare store operations.
[[nodiscard]] Line initializeTail();

/// The system calls of one `initialize` on its caller's thread, beside those of the bare store operations:
/// the one that also starts the session's threads, and any other.
[[nodiscard]] Line firstInitializeSystemCalls();
[[nodiscard]] Line initializeSystemCalls();

/// The stripped machine code of core and facade, in megabytes.
[[nodiscard]] Line librarySize();

}  // namespace VorselKelp::benchmarks
