#pragma once

#include <pthread.h>
#include <signal.h>

#include <thread>
#include <utility>

namespace VorselKelp::posix {

/// Starts a thread on which no signal is delivered: the application's handlers keep running on its own
/// threads, and a connection that breaks while being written to is an error code instead of a SIGPIPE.
template <class Work>
[[nodiscard]] std::thread startBackgroundThread(Work&& work) {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread(std::forward<Work>(work));
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace VorselKelp::posix
