#include "support/SystemCalls.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace VorselKelp::benchmarks {
namespace {

/// A call that nothing measured here makes: it marks where counting begins and ends.
constexpr long marker = SYS_getppid;

void give(const char* what) {
  std::perror(what);
  std::exit(1);
}

[[noreturn]] void beTraced(platform::FunctionRef<void()> prepare, platform::FunctionRef<void()> work) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
  prepare();
  std::raise(SIGSTOP);
  syscall(marker);
  work();
  syscall(marker);
  _exit(0);
}

/// The number of the call that the stopped process is about to make, or -1 when it is just leaving one.
long enteredCall(pid_t child) {
  __ptrace_syscall_info info{};
  if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) <= 0) give("PTRACE_GET_SYSCALL_INFO");
  return info.op == PTRACE_SYSCALL_INFO_ENTRY ? static_cast<long>(info.entry.nr) : -1;
}

}  // namespace

long systemCalls(platform::FunctionRef<void()> prepare, platform::FunctionRef<void()> work) {
  const pid_t child = fork();
  if (child < 0) give("fork");
  if (child == 0) beTraced(prepare, work);

  int status = 0;
  long count = 0;
  int markers = 0;
  waitpid(child, &status, 0);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  while (markers < 2 && WIFSTOPPED(status)) {
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status) || WSTOPSIG(status) != (SIGTRAP | 0x80)) continue;
    const long call = enteredCall(child);
    if (call == marker) {
      ++markers;
    } else if (call >= 0 && markers == 1) {
      ++count;
    }
  }
  if (markers < 2) give("a traced process ended early");
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  return count;
}

}  // namespace VorselKelp::benchmarks
