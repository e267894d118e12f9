// Runs the program given as arguments, its output dropped, and prints its peak memory in KiB. A process of
// its own, and a small one, because a child's peak counts from its parent's size on.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  if (posix_spawn(&child, argv[1], &actions, nullptr, argv + 1, environ) != 0) return 1;
  int status = 1;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) return 1;
  std::printf("%ld\n", usage.ru_maxrss);
  return 0;
}
