// fault_injector --under DIR [--at N] [--kill | --error NAME [--onwards]] [--process NAME] [--report FILE]
//                [--record FILE] -- COMMAND…
//
// Runs a command and disturbs the N-th call with which it, or a process that it starts, changes something
// below DIR: the calling process is killed before the call is carried out, or the call fails (with --onwards
// all later ones too). Without --at the calls are only counted. Ends as the command does (128 and the signal
// when one ended it) once all of its processes are gone; the report is one line of JSON, the record every
// call with its bytes. 125: this system does not permit it.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "FileCall.h"
#include "Listener.h"

namespace {

struct Options {
  std::string under;
  std::string process;
  std::string report;
  std::ofstream record;
  long at = 0;
  int error = 0;  ///< 0: kill
  bool onwards = false;
  char** command = nullptr;
};

int errorNamed(std::string_view name) {
  if (name == "ENOSPC") return ENOSPC;
  if (name == "EROFS") return EROFS;
  if (name == "EACCES") return EACCES;
  return 0;
}

bool read(Options& options, int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view name = argv[i];
    if (name == "--kill") continue;
    if (name == "--onwards") {
      options.onwards = true;
      continue;
    }
    if (++i >= argc) return false;
    if (name == "--") {
      options.command = argv + i;
      return !options.under.empty();
    }
    if (name == "--under") options.under = std::string(argv[i]) + "/";
    if (name == "--process") options.process = argv[i];
    if (name == "--report") options.report = argv[i];
    if (name == "--record") options.record.open(argv[i], std::ios::binary);
    if (name == "--at") options.at = std::atol(argv[i]);
    if (name == "--error" && (options.error = errorNamed(argv[i])) == 0) return false;
  }
  return false;
}

struct Count {
  long calls = 0;
  long hits = 0;
  std::string first;  ///< the first call that was disturbed
};

void decide(const Listener& listener, const WaitingCall& call, Options& options, Count& count) {
  const auto file = FileCall::of(call);
  const bool counts = file && file->path.starts_with(options.under) &&
                      (options.process.empty() || file->process == options.process) &&
                      (options.error == 0 || file->refusedWith(options.error));
  if (!counts) return listener.letGo(call);
  ++count.calls;
  if (options.record.is_open()) options.record << file->record(call) << std::flush;
  const bool hit =
      options.at > 0 && (count.calls == options.at || (options.onwards && count.calls > options.at));
  if (!hit) return listener.letGo(call);
  if (count.hits++ == 0) {
    count.first =
        std::string(file->name) + " " + file->path.substr(options.under.size()) + " by " + file->process;
  }
  if (options.error != 0) return listener.fail(call, options.error);
  // Takes the whole process with it.
  ::kill(call.thread, SIGKILL);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!read(options, argc, argv)) {
    std::fputs(
        "usage: fault_injector --under DIR [--at N] [--kill | --error ENOSPC|EROFS|EACCES [--onwards]] "
        "[--process NAME] [--report FILE] [--record FILE] -- COMMAND...\n",
        stderr);
    return 2;
  }
  auto listener = Listener::start(FileCall::numbers(), options.command);
  if (!listener.started()) return 125;
  Count count;
  for (WaitingCall call; listener.next(call);) decide(listener, call, options, count);
  const int status = listener.status();
  if (!options.report.empty()) {
    std::ofstream(options.report) << "{\"calls\":" << count.calls << ",\"hits\":" << count.hits
                                  << ",\"first\":\"" << count.first << "\"}\n";
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}
