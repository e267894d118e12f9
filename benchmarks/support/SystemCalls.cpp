#include "support/SystemCalls.h"

#include <fcntl.h>
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

[[noreturn]] void execTraced(const std::vector<std::string>& command) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
  const int dropped = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(dropped, STDOUT_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execv(arguments[0], arguments.data());
  _exit(1);
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

long systemCalls(const std::vector<std::string>& command) {
  const pid_t child = fork();
  if (child < 0) give("fork");
  if (child == 0) execTraced(command);

  int status = 0;
  long count = 0;
  waitpid(child, &status, 0);  // stopped by exec
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
  for (pid_t thread = child; thread != child || WIFSTOPPED(status); thread = waitpid(-1, &status, __WALL)) {
    if (!WIFSTOPPED(status)) continue;
    if (WSTOPSIG(status) == (SIGTRAP | 0x80) && enteredCall(thread) >= 0) ++count;
    ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr);
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) give("a traced program failed");
  return count;
}

}  // namespace VorselKelp::benchmarks
