#pragma once

#include <memory>
#include <string>

#include "phone/ChildProcess.h"
#include "phone/Outcome.h"
#include "phone/Target.h"

namespace phone {

/// A process of the target's application, as it is to be run.
class TargetProcess {
 public:
  TargetProcess(const Target& target, VorselKelp::simulator::ProcessKind kind, double timeLimit);

  /// An option with its value; an empty value leaves it out.
  void add(const char* option, const std::string& value);
  void addFlag(const char* flag) { command_.arguments.emplace_back(flag); }
  /// What the process gets on standard input.
  void read(std::string input) { command_.input = std::move(input); }
  /// Runs the program's twin with windows, with this added to its environment; `display` lives as long as
  /// this object.
  void showOn(const std::vector<std::pair<std::string, std::string>>& environment,
              std::shared_ptr<const void> display);

  /// As runProcess() does.
  [[nodiscard]] VorselKelp::Result<ChildOutcome> run(bool quiet = false,
                                                     const std::stop_token& stop = {}) const {
    return runProcess(command_, quiet, stop);
  }
  /// What the process sent and said.
  static void report(ChildOutcome child, Outcome& outcome);
  /// Why a process that ended with an exit status other than 0 did not do its work; `what` is its name for a
  /// person.
  static VorselKelp::Error failureOf(const ChildOutcome& child, const std::string& what);

 private:
  ChildCommand command_;
  std::shared_ptr<const void> display_;
};

}  // namespace phone
