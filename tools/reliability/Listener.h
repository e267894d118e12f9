#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>

/// A call that waits for a decision. The caller stands still until it gets one or is killed.
struct WaitingCall {
  std::uint64_t id = 0;
  pid_t thread = 0;
  int number = 0;  ///< of the system call
  std::uint64_t arguments[6]{};
};

/// Starts a command whose system calls of some numbers, in all of its threads and descendants, wait for a
/// decision. The kernel's user notification does it, without a tracer: calls are counted over all threads.
class Listener {
 public:
  /// A listener without a command, and a line on standard error, when this system does not permit it.
  static Listener start(std::span<const int> numbers, char* const* command);
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener();

  [[nodiscard]] bool started() const { return descriptor_ >= 0; }

  /// Waits for the next call; false when the command and all of its descendants are gone.
  bool next(WaitingCall& call);
  /// How the command ended, as waitpid() tells it; once next() has returned false.
  [[nodiscard]] int status() const { return status_; }
  void letGo(const WaitingCall& call) const { respond(call, 0); }
  void fail(const WaitingCall& call, int error) const { respond(call, error); }

 private:
  Listener(pid_t process, int descriptor);
  void respond(const WaitingCall& call, int error) const;

  pid_t process_ = -1;
  int processEnd_ = -1;  ///< readable when the command has ended
  int descriptor_ = -1;
  int status_ = 0;
};
