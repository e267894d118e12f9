#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace VorselKelp::testing_support {

/// Runs `body` in a child process made by fork; the child's exit status is 0 when it returned true. To be
/// started before the test opens or threads anything.
class ChildProcess {
 public:
  explicit ChildProcess(const std::function<bool()>& body) : id_(::fork()) {
    if (id_ == 0) ::_exit(body() ? 0 : 1);
  }
  ~ChildProcess() {
    if (id_ > 0) kill();
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// True when the body returned true.
  bool succeeded() {
    const int status = wait();
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }

  void kill() {
    ::kill(id_, SIGKILL);
    wait();
  }

 private:
  int wait() {
    int status = -1;
    if (id_ > 0) ::waitpid(id_, &status, 0);
    id_ = -1;
    return status;
  }

  pid_t id_;
};

}  // namespace VorselKelp::testing_support
