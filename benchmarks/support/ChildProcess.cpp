#include "support/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace VorselKelp::benchmarks {
namespace {

/// Runs a program with its output to `descriptor`.
void run(const std::vector<std::string>& command, int descriptor, const std::string& input = "") {
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, descriptor, STDOUT_FILENO);
  if (!input.empty()) posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
  pid_t child = 0;
  const int spawned = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 1;
  if (spawned != 0 || waitpid(child, &status, 0) != child || status != 0) {
    std::fprintf(stderr, "%s failed\n", command.front().c_str());
    std::exit(1);
  }
}

}  // namespace

void runChild(const std::vector<std::string>& command, const std::string& input) {
  static const int dropped = open("/dev/null", O_WRONLY | O_CLOEXEC);
  run(command, dropped, input);
}

long long printedNumber(const std::vector<std::string>& command) {
  std::FILE* const output = std::tmpfile();
  run(command, fileno(output));
  std::rewind(output);
  long long number = 0;
  if (std::fscanf(output, "%lld", &number) != 1) std::exit(1);
  std::fclose(output);
  return number;
}

long long peakMemory(std::vector<std::string> command) {
  command.insert(command.begin(), PEAK_MEMORY_EXECUTABLE);
  return printedNumber(command);
}

}  // namespace VorselKelp::benchmarks
