#include "VorselKelpSystem/ChildProcess.h"

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "delivery/ChildPipes.h"

namespace VorselKelp::system {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double graceSeconds = 5;
// How long a process that is gone is still listened to: one that it left behind may hold its pipes for ever.
constexpr double lastWordSeconds = 2;

/// This process's variables, with the command's in place of those of the same name.
std::vector<std::string> environmentOf(const ChildCommand& command) {
  std::vector<std::string> variables;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view variable = *entry;
    const auto name = variable.substr(0, variable.find('='));
    const bool replaced = std::any_of(command.environment.begin(), command.environment.end(),
                                      [&](const auto& added) { return added.first == name; });
    if (!replaced) variables.emplace_back(variable);
  }
  for (const auto& [name, value] : command.environment) variables.push_back(name + "=" + value);
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

class Child {
 public:
  Child(const ChildCommand& command, const ChildWatch& watch) : command_(command), watch_(watch) {}

  Result<ChildOutcome> run() {
    auto channel = makePipe();
    auto errors = makePipe();
    auto input = makeInput(command_.input);
    if (channel.write.number() < 0 || errors.write.number() < 0 || input.number() < 0) {
      return Error{"Cannot talk to a new process: " + std::string(std::strerror(errno))};
    }
    if (const int code = spawn(input.number(), channel.write.number(), errors.write.number()))
      return Error{"Cannot start " + command_.program + ": " + std::strerror(code), code};
    channel.write.close();
    errors.write.close();
    collect(channel.read, errors.read);
    finish();
    return std::move(outcome_);
  }

 private:
  int spawn(int input, int channel, int errors) {
    std::vector<std::string> arguments{command_.program};
    arguments.insert(arguments.end(), command_.arguments.begin(), command_.arguments.end());
    auto variables = environmentOf(command_);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, channel, command_.channel);
    // The thread that starts it may block signals, which the child would inherit.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const int code = ::posix_spawn(&process_, command_.program.c_str(), &actions, &attributes,
                                   pointersTo(arguments).data(), pointersTo(variables).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return code;
  }

  void collect(PipeEnd& channel, PipeEnd& errors) {
    const auto deadline = Clock::now() + std::chrono::duration<double>(command_.timeLimit + graceSeconds);
    std::array<PipeEnd*, 2> sources{&channel, &errors};
    while (true) {
      if (Clock::now() >= deadline) end("it did not end in its time");
      // One that closed them both is mostly at its end.
      const bool open = channel.number() >= 0 || errors.number() >= 0;
      std::array<pollfd, 3> waits{};
      for (std::size_t i = 0; i < sources.size(); ++i) waits[i] = {sources[i]->number(), POLLIN, 0};
      waits[2] = {watch_.stop, POLLIN, 0};
      const int ready = ::poll(waits.data(), waits.size(), open ? 200 : 5);
      if (ready < 0 && errno != EINTR) break;
      if (watch_.tick) watch_.tick();
      if (waits[2].revents != 0) {
        end("it was no longer wanted");
        break;
      }
      if (isGone(ready)) break;
      for (std::size_t i = 0; i < sources.size(); ++i) {
        if (waits[i].revents != 0) readFrom(*sources[i], i == 0);
      }
    }
    if (!errorLines_.rest().empty()) outcome_.errorLines.push_back(errorLines_.rest());
    if (channelLines_.leftOut() || errorLines_.leftOut()) {
      outcome_.errorLines.push_back(command_.program + " wrote a line of more than 64 MiB; it is left out");
    }
  }

  /// Ends the process, for this reason unless it has ended by itself.
  void end(const char* reason) {
    if (endReason_ != nullptr) return;
    endReason_ = reason;
    ::kill(process_, SIGKILL);
  }

  /// Whether the process has ended and there is nothing more to read of it, after a poll that found `ready`
  /// pipes. Its pipes may stay open all the same.
  bool isGone(int ready) {
    if (ready > 0 && !goneAt_ && endReason_ == nullptr) return false;
    if (!goneAt_) {
      siginfo_t info{};
      if (::waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return true;
      if (info.si_pid == 0) return false;
      goneAt_ = Clock::now();
    }
    return ready <= 0 || endReason_ != nullptr ||
           Clock::now() > *goneAt_ + std::chrono::duration<double>(lastWordSeconds);
  }

  void readFrom(PipeEnd& source, bool isChannel) {
    std::array<char, 65536> buffer{};
    const auto got = ::read(source.number(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) return;
    if (got <= 0) return source.close();
    written_ += static_cast<std::size_t>(got);
    if (written_ > command_.outputLimit) return end("it wrote too much");
    const std::string_view bytes(buffer.data(), static_cast<std::size_t>(got));
    if (isChannel) {
      channelLines_.add(bytes, [this](const std::string& line) { noteEvent(line); });
    } else {
      errorLines_.add(bytes, [this](std::string line) { outcome_.errorLines.push_back(std::move(line)); });
    }
  }

  void noteEvent(const std::string& line) {
    // What a process says after its end belongs to nobody: its user has turned away.
    if (outcome_.ended) return;
    auto event = JSONAny::decode(line);
    if (!event) return;
    if (event->find("ended") != nullptr) outcome_.ended = true;
    if (watch_.event) watch_.event(*event);
    outcome_.events.push_back(std::move(*event));
  }

  void finish() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    if (endReason_ != nullptr && WIFSIGNALED(status)) {
      outcome_.stopReason = endReason_;
    } else if (WIFSIGNALED(status)) {
      outcome_.stopReason = reasonFor(WTERMSIG(status));
    } else {
      outcome_.exitStatus = WEXITSTATUS(status);
    }
  }

  /// The line in which it said so itself, else the signal's name.
  std::string reasonFor(int signal) {
    for (auto line = outcome_.errorLines.begin(); line != outcome_.errorLines.end(); ++line) {
      if (!line->starts_with("Fatal error: ")) continue;
      auto reason = std::move(*line);
      outcome_.errorLines.erase(line);
      return reason;
    }
    return "signal " + std::to_string(signal) + " (" + ::strsignal(signal) + ")";
  }

  const ChildCommand& command_;
  const ChildWatch& watch_;
  pid_t process_ = -1;
  const char* endReason_ = nullptr;
  std::size_t written_ = 0;
  std::optional<Clock::time_point> goneAt_;
  Lines channelLines_;
  Lines errorLines_;
  ChildOutcome outcome_;
};

}  // namespace

std::vector<JSONAny> ChildOutcome::valuesOf(std::string_view event) const {
  std::vector<JSONAny> values;
  for (const auto& each : events) {
    if (const auto* value = each.find(event)) values.push_back(*value);
  }
  return values;
}

std::optional<JSONAny> ChildOutcome::firstOf(std::string_view event) const {
  for (const auto& each : events) {
    if (const auto* value = each.find(event)) return *value;
  }
  return std::nullopt;
}

Result<ChildOutcome> runChild(const ChildCommand& command, const ChildWatch& watch) {
  return Child(command, watch).run();
}

}  // namespace VorselKelp::system
