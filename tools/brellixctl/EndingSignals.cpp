#include "brellixctl/EndingSignals.h"

#include <csignal>

namespace brellixctl {

namespace {

volatile std::sig_atomic_t noted = 0;

}  // namespace

EndingNote::EndingNote() {
  noted = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { noted = 1; };
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGINT, &action, &interrupt_);
  ::sigaction(SIGTERM, &action, &terminate_);
}

EndingNote::~EndingNote() {
  ::sigaction(SIGINT, &interrupt_, nullptr);
  ::sigaction(SIGTERM, &terminate_, nullptr);
}

bool EndingNote::came() {
  return noted != 0;
}

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
