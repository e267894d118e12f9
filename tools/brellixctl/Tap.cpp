#include <algorithm>

#include "brellixctl/Operations.h"
#include "phone/TargetProcess.h"

namespace brellixctl {

using phone::ChildOutcome;
using phone::TargetProcess;
using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
namespace platform = VorselKelp::platform;
namespace device = VorselKelp::simulator;

namespace {

bool hasButton(device::SimulatedDevice& simulated, const platform::NotificationContent& content,
               const std::string& action) {
  if (action == platform::defaultActionIdentifier || action == platform::dismissActionIdentifier) return true;
  const auto actions = simulated.actionsOf(content.categoryIdentifier);
  return std::any_of(actions.begin(), actions.end(),
                     [&](const auto& button) { return button.identifier == action; });
}

std::optional<JSONAny> deepLinkOf(const ChildOutcome& child) {
  for (const auto& call : child.valuesOf("delegate")) {
    const auto* name = call.find("name");
    const auto* arguments = call.find("arguments");
    if (name == nullptr || arguments == nullptr || name->value != JSONAny("handleURL").value) continue;
    const auto* list = arguments->as<JSONAny::List>();
    if (list != nullptr && !list->empty()) return list->front();
  }
  return std::nullopt;
}

TapOutcome outcomeOf(ChildOutcome child) {
  TapOutcome outcome;
  outcome.completion = child.firstOf("completion");
  outcome.browser = child.firstOf("browser");
  outcome.deepLink = deepLinkOf(child);
  outcome.pictures = child.valuesOf("picture");
  TargetProcess::report(std::move(child), outcome);
  return outcome;
}

}  // namespace

Result<TapOutcome> tap(const Target& target, const TapRequest& request) {
  auto simulated = target.device();
  const auto tapped = simulated.tappable(request.identifier);
  if (!tapped) {
    return Error{"The device holds no notification \"" + request.identifier +
                 "\"; brellixctl notifications lists what there is"};
  }
  TargetProcess process(target, VorselKelp::simulator::ProcessKind::application, request.timeLimit);
  process.add(request.onDesktop ? "--notify" : "--tap", request.identifier);
  if (request.action) {
    process.addFlag("--action");
    process.addFlag(request.action->c_str());  // which may be empty
  }
  if (!request.handle) process.addFlag("--no-handle");
  process.add("--pictures", request.pictures);
  auto display = request.onDesktop ? Display::find() : Result<std::shared_ptr<Display>>(request.display);
  if (!display) return display.error();
  showOn(process, *display);
  auto child = process.run();
  if (!child) return child.error();
  if (child->stopReason) {
    // It was tapped all the same.
    simulated.noteTapped(request.identifier);
    return Error{"The application stopped: " + *child->stopReason};
  }
  if (child->exitStatus != 0) return TargetProcess::failureOf(*child, "The application");
  auto outcome = outcomeOf(*std::move(child));
  if (request.action && !hasButton(simulated, tapped->content, *request.action)) {
    outcome.failure = "The notification shows no button \"" + *request.action +
                      "\"; the application got the response all the same";
  }
  return outcome;
}

}  // namespace brellixctl
