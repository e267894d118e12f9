#pragma once

#include <signal.h>

namespace brellixctl {

/// Keeps the signals that end a server from this thread, and from those that it starts from now on.
sigset_t holdEndingSignals();

/// Blocks until the user has had enough of it.
void waitForInterrupt(const sigset_t& signals);

}  // namespace brellixctl
