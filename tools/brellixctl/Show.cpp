#include "brellixctl/ChildProcess.h"
#include "brellixctl/Operations.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;

Result<ShowOutcome> show(const Target& target, const ShowRequest& request) {
  auto simulated = target.device();
  if (!simulated.tappable(request.identifier)) {
    return Error{"The device holds no notification \"" + request.identifier +
                 "\"; brellixctl notifications lists what there is"};
  }
  ChildCommand command;
  command.program = "news_content";
  command.timeLimit = request.timeLimit;
  command.arguments = {"--home", target.homePath,    "--app",        target.manifestPath,
                       "--id",   request.identifier, "--time-limit", std::to_string(request.timeLimit)};
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) command.arguments.insert(command.arguments.end(), {option, value});
  };
  add("--do", request.acts);
  add("--png", request.png);
  add("--pictures", request.pictures);
  auto display = request.display;
  if (request.window) command.arguments.push_back("--stay");
  if (!display && (request.window || !request.png.empty())) {
    auto found = request.window ? Display::users() : Display::find();
    if (!found) return found.error();
    display = *std::move(found);
  }
  if (display) {
    command.program = "news_content_desktop";
    command.environment = display->environment();
  }
  auto child = runChild(command);
  if (!child) return child.error();
  ShowOutcome outcome;
  outcome.carousel = child->firstOf("carousel");
  outcome.opened = child->firstOf("opened");
  outcome.pictures = child->valuesOf("picture");
  outcome.console = child->valuesOf("console");
  outcome.errorLines = std::move(child->errorLines);
  if (child->stopReason) {
    outcome.stopped = true;
    outcome.errorLines.push_back("The content extension stopped: " + *child->stopReason);
  } else if (child->exitStatus != 0) {
    const auto reason =
        outcome.errorLines.empty() ? "The content extension could not start" : outcome.errorLines.back();
    return Error{reason, child->exitStatus == wrongUsage ? wrongUsage : 0};
  }
  return outcome;
}

}  // namespace brellixctl
