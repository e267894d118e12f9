#include "brellixctl/Operations.h"
#include "brellixctl/TargetProcess.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;

namespace {

Result<std::shared_ptr<Display>> displayFor(const ShowRequest& request) {
  if (request.window) return Display::users();
  if (request.display || request.png.empty()) return request.display;
  return Display::find();
}

}  // namespace

Result<ShowOutcome> show(const Target& target, const ShowRequest& request) {
  auto simulated = target.device();
  if (!simulated.tappable(request.identifier)) {
    return Error{"The device holds no notification \"" + request.identifier +
                 "\"; brellixctl notifications lists what there is"};
  }
  TargetProcess process(target, "news_content", request.timeLimit);
  process.add("--id", request.identifier);
  process.add("--do", request.acts);
  process.add("--png", request.png);
  process.add("--pictures", request.pictures);
  if (request.window) process.addFlag("--stay");
  auto display = displayFor(request);
  if (!display) return display.error();
  process.showOn(*std::move(display));
  auto child = process.run();
  if (!child) return child.error();
  if (!child->stopReason && child->exitStatus != 0) {
    return TargetProcess::failureOf(*child, "The content extension");
  }
  ShowOutcome outcome;
  outcome.carousel = child->firstOf("carousel");
  outcome.opened = child->firstOf("opened");
  outcome.pictures = child->valuesOf("picture");
  outcome.console = child->valuesOf("console");
  outcome.errorLines = std::move(child->errorLines);
  if (child->stopReason) {
    outcome.stopped = true;
    outcome.errorLines.push_back("The content extension stopped: " + *child->stopReason);
  }
  return outcome;
}

}  // namespace brellixctl
