#include "phone/TargetProcess.h"

#include <utility>

namespace phone {

using VorselKelp::JSONAny;

namespace {

JSONAny numberOf(const JSONAny& event) {
  const auto* number = event.find("number");
  return number != nullptr ? *number : JSONAny();
}

/// Each request with the "status" or the "error" that it was answered with; those without an answer have
/// neither.
std::vector<JSONAny> requestsOf(const ChildOutcome& child) {
  const auto answers = child.valuesOf("answer");
  std::vector<JSONAny> requests;
  for (const auto& sent : child.valuesOf("request")) {
    JSONAny::Dictionary request;
    const auto copy = [&request](const JSONAny& event, const char* name) {
      if (const auto* value = event.find(name)) request.push_back({name, *value});
    };
    copy(sent, "method");
    copy(sent, "url");
    for (const auto& answer : answers) {
      if (numberOf(answer) != numberOf(sent)) continue;
      copy(answer, "status");
      copy(answer, "error");
    }
    requests.push_back(std::move(request));
  }
  return requests;
}

}  // namespace

TargetProcess::TargetProcess(const Target& target, VorselKelp::simulator::ProcessKind kind,
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

void TargetProcess::showOn(const std::vector<std::pair<std::string, std::string>>& environment,
                           std::shared_ptr<const void> display) {
  display_ = std::move(display);
  command_.program += "_desktop";
  command_.environment = environment;
}

void TargetProcess::report(ChildOutcome child, Outcome& outcome) {
  outcome.requests = requestsOf(child);
  outcome.console = child.valuesOf("console");
  outcome.errorLines = std::move(child.errorLines);
}

VorselKelp::Error TargetProcess::failureOf(const ChildOutcome& child, const std::string& what) {
  // A toolkit may have complained before.
  const auto reason = child.errorLines.empty() ? what + " could not start" : child.errorLines.back();
  return {reason, child.exitStatus == wrongUsage ? wrongUsage : 0};
}

}  // namespace phone
