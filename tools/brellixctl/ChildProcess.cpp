#include "brellixctl/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>

#include "brellixctl/Progress.h"

namespace brellixctl {
namespace {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
using Clock = std::chrono::steady_clock;

constexpr int channelDescriptor = 3;
constexpr double graceSeconds = 5;
// How long a process that is gone is still listened to: one that it left behind may hold its pipes for ever.
constexpr double lastWordSeconds = 2;
constexpr std::size_t longestLine = std::size_t{64} << 20;

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

struct Pipe {
  Descriptor read, write;
};

/// The numbers that the child gets are kept free, so that none of its descriptors is copied onto itself.
Descriptor raised(int number) {
  Descriptor original(number);
  return Descriptor(::fcntl(number, F_DUPFD_CLOEXEC, 10));
}

Pipe makePipe() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {Descriptor(), Descriptor()};
  return {raised(ends[0]), raised(ends[1])};
}

Descriptor inputOf(const std::string& bytes) {
  Descriptor file(::memfd_create("input", MFD_CLOEXEC));
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const auto written = ::write(file.number(), rest.data(), rest.size());
    if (written <= 0) return Descriptor();
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  ::lseek(file.number(), 0, SEEK_SET);
  return Descriptor(::fcntl(file.number(), F_DUPFD_CLOEXEC, 10));
}

std::string besideThisExecutable(const std::string& program) {
  if (program.starts_with('/')) return program;
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? program : (self.parent_path() / program).string();
}

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

/// Collects bytes and gives them out line by line. A line that grows beyond all measure is left out.
class Lines {
 public:
  template <class Take>
  void add(std::string_view bytes, Take&& take) {
    pending_ += bytes;
    std::size_t start = 0;
    for (auto end = pending_.find('\n', searched_); end != std::string::npos;
         end = pending_.find('\n', start)) {
      if (!std::exchange(skipping_, false)) take(pending_.substr(start, end - start));
      start = end + 1;
    }
    pending_.erase(0, start);
    if (skipping_ || pending_.size() > longestLine) {
      leftOut_ = skipping_ = true;
      pending_.clear();
    }
    searched_ = pending_.size();
  }
  [[nodiscard]] bool leftOut() const { return leftOut_; }
  [[nodiscard]] const std::string& rest() const { return pending_; }

 private:
  std::string pending_;
  std::size_t searched_ = 0;
  bool skipping_ = false;
  bool leftOut_ = false;
};

class Child {
 public:
  explicit Child(const ChildCommand& command) : command_(command) {}

  Result<ChildOutcome> run() {
    auto channel = makePipe();
    auto errors = makePipe();
    auto input = inputOf(command_.input);
    if (channel.write.number() < 0 || errors.write.number() < 0 || input.number() < 0) {
      return Error{"Cannot talk to a new process: " + std::string(std::strerror(errno))};
    }
    const auto program = besideThisExecutable(command_.program);
    if (const int code = spawn(program, input.number(), channel.write.number(), errors.write.number())) {
      return Error{"Cannot start " + program + ": " + std::strerror(code) +
                   (command_.program == program ? "; see \"programs\" of the manifest"
                                                : "; the example application is built beside brellixctl")};
    }
    channel.write.close();
    errors.write.close();
    collect(channel.read, errors.read);
    finish();
    return std::move(outcome_);
  }

 private:
  int spawn(const std::string& program, int input, int channel, int errors) {
    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), command_.arguments.begin(), command_.arguments.end());
    arguments.insert(arguments.end(), {"--channel", std::to_string(channelDescriptor)});
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    auto variables = environmentOf(command_);
    std::vector<char*> environment;
    for (auto& variable : variables) environment.push_back(variable.data());
    environment.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    posix_spawn_file_actions_adddup2(&actions, channel, channelDescriptor);
    const int code =
        ::posix_spawn(&process_, program.c_str(), &actions, nullptr, pointers.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    return code;
  }

  void collect(Descriptor& channel, Descriptor& errors) {
    const auto deadline = Clock::now() + std::chrono::duration<double>(command_.timeLimit + graceSeconds);
    Progress progress(command_.program + " is still at work");
    std::array<Descriptor*, 2> sources{&channel, &errors};
    while (channel.number() >= 0 || errors.number() >= 0) {
      if (!killed_ && Clock::now() >= deadline) {
        killed_ = true;
        ::kill(process_, SIGKILL);
      }
      std::array<pollfd, 2> waits{};
      for (std::size_t i = 0; i < waits.size(); ++i) waits[i] = {sources[i]->number(), POLLIN, 0};
      const int ready = ::poll(waits.data(), waits.size(), 200);
      if (ready < 0 && errno != EINTR) break;
      progress.tick();
      if (isGone(ready)) break;
      for (std::size_t i = 0; i < waits.size(); ++i) {
        if (waits[i].revents != 0) readFrom(*sources[i], i == 0);
      }
    }
    if (!errorLines_.rest().empty()) outcome_.errorLines.push_back(errorLines_.rest());
    if (channelLines_.leftOut() || errorLines_.leftOut()) {
      outcome_.errorLines.push_back(command_.program + " wrote a line of more than 64 MiB; it is left out");
    }
  }

  /// Whether the process has ended and there is nothing more to read of it, after a poll that found `ready`
  /// pipes. Its pipes may stay open all the same.
  bool isGone(int ready) {
    if (ready > 0 && !goneAt_ && !killed_) return false;
    if (!goneAt_) {
      siginfo_t info{};
      if (::waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) != 0) return true;
      if (info.si_pid == 0) return false;
      goneAt_ = Clock::now();
    }
    return ready <= 0 || Clock::now() > *goneAt_ + std::chrono::duration<double>(lastWordSeconds);
  }

  void readFrom(Descriptor& source, bool isChannel) {
    std::array<char, 65536> buffer{};
    const auto got = ::read(source.number(), buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) return;
    if (got <= 0) return source.close();
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
    outcome_.events.push_back(std::move(*event));
  }

  void finish() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    if (killed_ && WIFSIGNALED(status)) {
      outcome_.stopReason = "it did not end in its time";
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
  pid_t process_ = -1;
  bool killed_ = false;
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

Result<ChildOutcome> runChild(const ChildCommand& command) {
  return Child(command).run();
}

}  // namespace brellixctl
