#include "brellixctl/TargetProcess.h"

#include <utility>

namespace brellixctl {

TargetProcess::TargetProcess(const Target& target, VorselKelp::linux_platform::ProcessKind kind,
                             double timeLimit) {
  command_.program = target.program(kind);
  command_.timeLimit = timeLimit;
  add("--home", target.homePath);
  add("--app", target.manifestPath);
  add("--time-limit", std::to_string(timeLimit));
}

void TargetProcess::add(const char* option, const std::string& value) {
  if (!value.empty()) command_.arguments.insert(command_.arguments.end(), {option, value});
}

void TargetProcess::showOn(std::shared_ptr<Display> display) {
  if (!display) return;
  display_ = std::move(display);
  command_.program += "_desktop";
  command_.environment = display_->environment();
}

VorselKelp::Error TargetProcess::failureOf(const ChildOutcome& child, const std::string& what) {
  // A toolkit may have complained before.
  const auto reason = child.errorLines.empty() ? what + " could not start" : child.errorLines.back();
  return {reason, child.exitStatus == wrongUsage ? wrongUsage : 0};
}

}  // namespace brellixctl
