#include <sys/random.h>

#include "VorselKelpPosix/Hex.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/Operations.h"
#include "brellixctl/PayloadFile.h"
#include "brellixctl/TargetProcess.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
using VorselKelp::posix::hexOf;
namespace platform = VorselKelp::platform;
namespace device = VorselKelp::simulator;
namespace system = VorselKelp::system;

namespace {

std::string makeIdentifier() {
  std::string bytes(16, '\0');
  if (::getrandom(bytes.data(), bytes.size(), 0) < 0) bytes.assign(16, '0');
  auto text = hexOf(bytes);
  for (const std::size_t dash : {8, 13, 18, 23}) text.insert(dash, 1, '-');
  return text;
}

std::string wordFor(const ChildOutcome& child, bool answered) {
  if (child.stopReason && !answered) return "stopped";
  if (!answered) return "silent";
  return child.firstOf("timeLimit") ? "timeLimit" : "answered";
}

/// Why a push does not reach the application at all; nothing of it runs then, and nothing is asked for.
VorselKelp::Status reachable(device::SimulatedDevice& simulated) {
  const auto permission = simulated.authorization();
  if (permission == platform::AuthorizationStatus::notDetermined)
    return Error{
        "Nothing is shown: the user has not been asked yet; brellixctl launch --answer allow, with --prompt "
        "ok "
        "where the publisher's page asks first"};
  if (permission == platform::AuthorizationStatus::denied)
    return Error{"Nothing is shown: the user does not allow notifications"};
  if (!simulated.remoteToken())
    return Error{"Nothing arrives: the application has no device token; brellixctl launch --answer allow"};
  return VorselKelp::Done{};
}

/// Lets the service extension change `request`, and notes how that went.
VorselKelp::Status runExtension(const Target& target, const PushRequest& asked, const std::string& payload,
                                platform::NotificationRequest& request, PushOutcome& outcome) {
  ChildCommand command;
  command.program = target.program(device::ProcessKind::serviceExtension);
  command.input = payload;
  command.timeLimit = asked.timeLimit;
  command.arguments = {"--home", target.homePath,    "--app",        target.manifestPath,
                       "--id",   request.identifier, "--time-limit", std::to_string(asked.timeLimit)};
  auto child = runProcess(command);
  if (!child) return child.error();
  if (!child->stopReason && !child->ended && child->exitStatus != 0 && !child->errorLines.empty()) {
    return Error{child->errorLines.front()};
  }
  const auto content = child->firstOf("content");
  outcome.extension = wordFor(*child, content.has_value());
  if (child->stopReason) outcome.failure = "The service extension stopped: " + *child->stopReason;
  TargetProcess::report(*std::move(child), outcome);
  if (content) {
    auto info = std::move(request.content.userInfo);
    request.content = system::decodeContent(*content);
    const auto* changed = content->find("userInfo");
    const auto* dictionary = changed != nullptr ? changed->as<JSONAny::Dictionary>() : nullptr;
    request.content.userInfo = dictionary != nullptr ? platform::UserInfo(*dictionary) : std::move(info);
  }
  return VorselKelp::Done{};
}

}  // namespace

Result<PushOutcome> push(const Target& target, const PushRequest& asked) {
  const auto payload = readPayload(asked.payloadPath);
  if (!payload) return payload.error();
  const auto json = decodePayload(*payload, asked.payloadPath);
  if (!json) return json.error();
  auto simulated = target.device();
  if (const auto status = reachable(simulated); !status) return status.error();
  platform::NotificationRequest request;
  request.identifier = asked.identifier.empty() ? makeIdentifier() : asked.identifier;
  request.content = system::originalContent(*json);
  request.content.userInfo = platform::UserInfo::fromJSON(*payload);
  PushOutcome outcome;
  outcome.extension = "notRun";
  if (wantsExtension(*json)) {
    if (const auto status = runExtension(target, asked, *payload, request, outcome); !status)
      return status.error();
  }
  auto shown = simulated.deliver(std::move(request));
  if (!shown) return Error{"The notification was not delivered. " + shown.error().description};
  outcome.shown = std::move(*shown);
  outcome.actions = simulated.actionsOf(outcome.shown.content.categoryIdentifier);
  return outcome;
}

}  // namespace brellixctl
