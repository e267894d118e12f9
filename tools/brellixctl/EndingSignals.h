#pragma once

#include <signal.h>

namespace brellixctl {

/// Keeps the signals that end a server from this thread, and from those that it starts from now on.
sigset_t holdEndingSignals();

/// Blocks until the user has had enough of it.
void waitForInterrupt(const sigset_t& signals);

/// While it lives a signal that would end this process is noted instead. One at a time.
class EndingNote {
 public:
  EndingNote();
  ~EndingNote();
  EndingNote(const EndingNote&) = delete;
  EndingNote& operator=(const EndingNote&) = delete;

  [[nodiscard]] static bool came();

 private:
  struct sigaction interrupt_ {};
  struct sigaction terminate_ {};
};

}  // namespace brellixctl
