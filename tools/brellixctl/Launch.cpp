#include "VorselKelpLinux/Hex.h"
#include "VorselKelpLinux/NotificationRecords.h"
#include "brellixctl/ChildProcess.h"
#include "brellixctl/Operations.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
using VorselKelp::linux_platform::hexOf;

namespace {

/// Whether an event is about call number `call`.
bool isAbout(const JSONAny& event, std::size_t call) {
  const auto* index = event.find("call");
  return index != nullptr && *index == JSONAny(static_cast<std::int64_t>(call));
}

/// What the call returned, or for an operation with a completion the arguments of each of its calls. Absent
/// when the call was not made.
std::optional<JSONAny> resultOf(const ChildOutcome& child, std::size_t call) {
  for (const auto& returned : child.valuesOf("returned")) {
    if (!isAbout(returned, call)) continue;
    const auto* hasCompletion = returned.find("hasCompletion");
    if (hasCompletion == nullptr || hasCompletion->value != JSONAny(true).value) {
      const auto* value = returned.find("value");
      return value != nullptr ? *value : JSONAny();
    }
    JSONAny::List completions;
    for (const auto& completed : child.valuesOf("completed")) {
      const auto* arguments = completed.find("arguments");
      if (arguments != nullptr && isAbout(completed, call)) completions.push_back(*arguments);
    }
    return completions;
  }
  return std::nullopt;
}

}  // namespace

Result<LaunchOutcome> launch(const Target& target, const LaunchRequest& request) {
  ChildCommand command;
  command.program = "news_app";
  command.timeLimit = request.timeLimit;
  command.arguments = {"--home",       target.homePath,
                       "--app",        target.manifestPath,
                       "--time-limit", std::to_string(request.timeLimit)};
  if (!request.answer.empty())
    command.arguments.insert(command.arguments.end(), {"--answer", request.answer});
  for (const auto& call : request.calls) command.arguments.insert(command.arguments.end(), {"--call", call});
  for (const auto& event : request.beacons)
    command.arguments.insert(command.arguments.end(), {"--beacon", event});
  auto child = runChild(command);
  if (!child) return child.error();
  if (child->stopReason) return Error{"The application stopped: " + *child->stopReason};
  if (child->exitStatus != 0) {
    const auto reason =
        child->errorLines.empty() ? "The application could not start" : child->errorLines.front();
    return Error{reason, child->exitStatus == wrongUsage ? wrongUsage : 0};
  }
  LaunchOutcome outcome;
  if (const auto ended = child->firstOf("ended")) {
    const auto* flag = ended->find("initialised");
    outcome.initialised = flag != nullptr && flag->value == JSONAny(true).value;
  }
  auto device = target.device();
  outcome.authorisation = VorselKelp::linux_platform::authorizationWord(device.authorization());
  if (const auto token = device.remoteToken()) outcome.token = hexOf(*token);
  outcome.delegate = child->valuesOf("delegate");
  for (std::size_t call = 0; call < request.calls.size(); ++call) {
    auto result = resultOf(*child, call);
    if (!result) outcome.complete = false;
    outcome.results.push_back(result.value_or(JSONAny()));
  }
  outcome.console = child->valuesOf("console");
  outcome.errorLines = std::move(child->errorLines);
  return outcome;
}

}  // namespace brellixctl
