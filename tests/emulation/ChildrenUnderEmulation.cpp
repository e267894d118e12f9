// Loaded into an emulated process before everything else: the programs that it starts are for the same
// foreign processor, and run under the same emulator. A machine that lets its administrator register the
// emulator needs nothing of this.

#include <dlfcn.h>
#include <elf.h>
#include <spawn.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

namespace {

constexpr const char* emulator = "/usr/bin/qemu-aarch64";

bool isForeign(const char* program) {
  Elf64_Ehdr header{};
  std::ifstream stream(program, std::ios::binary);
  return stream.read(reinterpret_cast<char*>(&header), sizeof header) &&
         std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_machine == EM_AARCH64;
}

/// A command line and an environment for this machine's own system: this object means nothing to it, and
/// reaches the emulated program by QEMU_SET_ENV.
struct Command {
  Command(const char* path, char* const* argv, char* const* envp) : program(path) {
    if (isForeign(path)) {
      program = emulator;
      arguments = {const_cast<char*>(emulator), const_cast<char*>("-0"), argv[0], const_cast<char*>(path)};
      if (*argv != nullptr) ++argv;
    }
    for (; *argv != nullptr; ++argv) arguments.push_back(*argv);
    arguments.push_back(nullptr);
    for (; *envp != nullptr; ++envp) {
      if (!std::string_view(*envp).starts_with("LD_PRELOAD=")) environment.push_back(*envp);
    }
    environment.push_back(nullptr);
  }

  const char* program;
  std::vector<char*> arguments;
  std::vector<char*> environment;
};

template <class Function>
Function* next(Function*, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int execve(const char* path, char* const* argv, char* const* envp) noexcept {
  Command command(path, argv, envp);
  return next(&execve, "execve")(command.program, command.arguments.data(), command.environment.data());
}

int execv(const char* path, char* const* argv) noexcept {
  return execve(path, argv, environ);
}

int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const* argv, char* const* envp) {
  // The emulator's child has memory of its own, in which its failure is lost.
  if (::access(path, X_OK) != 0) return errno;
  Command command(path, argv, envp);
  return next(&posix_spawn, "posix_spawn")(child, command.program, actions, attributes,
                                           command.arguments.data(), command.environment.data());
}
}
