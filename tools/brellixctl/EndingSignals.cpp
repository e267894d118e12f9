#include "brellixctl/EndingSignals.h"

namespace brellixctl {

sigset_t holdEndingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void waitForInterrupt(const sigset_t& signals) {
  int signal = 0;
  ::sigwait(&signals, &signal);
}

}  // namespace brellixctl
