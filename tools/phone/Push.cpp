#include "phone/Push.h"

#include <sys/random.h>

#include <chrono>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/Hex.h"
#include "VorselKelpSystem/Delivery.h"
#include "phone/ChildProcess.h"
#include "phone/Progress.h"
#include "phone/TargetProcess.h"

namespace phone {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::RemoteKind;
using VorselKelp::Result;
using VorselKelp::Status;
using VorselKelp::posix::hexOf;
namespace platform = VorselKelp::platform;
namespace device = VorselKelp::simulator;
namespace system = VorselKelp::system;

namespace {

// A payload may have 64 MiB, and comes back as the content's.
constexpr std::size_t outputLimit = std::size_t{256} << 20;
constexpr auto tick = std::chrono::milliseconds(200);

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

Error noToken() {
  return {"Nothing arrives: the application has no device token; brellixctl launch --answer allow",
          notWanted};
}

/// Why a push is not shown at all; nothing of the application runs then, and nothing is asked for.
Status allowed(device::SimulatedDevice& simulated) {
  const auto permission = simulated.authorization();
  if (permission == platform::AuthorizationStatus::notDetermined)
    return Error{
        "Nothing is shown: the user has not been asked yet; brellixctl launch --answer allow, with --prompt "
        "ok "
        "where the publisher's page asks first",
        notWanted};
  if (permission == platform::AuthorizationStatus::denied)
    return Error{"Nothing is shown: the user does not allow notifications", notWanted};
  if (!simulated.remoteToken()) return noToken();
  return VorselKelp::Done{};
}

Error stopped() {
  return {"The push is not delivered yet", notNow};
}

/// What a delivery through the service extension comes to.
struct Delivered {
  Result<system::PushResult> result = Error{"The push was not answered"};
  system::ExtensionReport extension;
};

Result<Delivered> extend(const Target& target, const Push& push) {
  const auto program = target.program(device::ProcessKind::serviceExtension);
  system::ServiceProgram service;
  service.program = pathOf(program);
  service.channel = channelDescriptor;
  service.arguments = {"--home",    target.homePath,
                       "--app",     target.manifestPath,
                       "--channel", std::to_string(channelDescriptor)};
  service.timeLimit = push.timeLimit;
  service.outputLimit = outputLimit;
  const auto loop = std::make_shared<VorselKelp::posix::EventLoop>();
  const auto delivery = system::makeDelivery(std::move(service), loop);
  Delivered delivered;
  bool ended = false;
  delivery->deliver({push.identifier, push.payload, ""},
                    {[&](Result<system::PushResult> result) { delivered.result = std::move(result); },
                     [&](system::ExtensionReport report) {
                       delivered.extension = std::move(report);
                       ended = true;
                     }});
  Progress progress(program + " is still at work", push.quiet);
  // The delivery ends the extension in its time, or when it goes itself.
  while (!loop->run([&] { return ended; }, VorselKelp::posix::EventLoop::Clock::now() + tick)) {
    if (push.stop.stop_requested()) return stopped();
    progress.tick();
  }
  if (delivered.extension.notStarted) return startFailure(program, *delivered.extension.notStarted);
  if (!delivered.result) return delivered.result.error();
  return delivered;
}

/// Notes how the extension did. An error when it said that it can't do its work at all.
Status noteExtension(ChildOutcome child, PushOutcome& outcome) {
  if (!child.stopReason && !child.ended && child.exitStatus != 0 && !child.errorLines.empty())
    return Error{child.errorLines.front()};
  const bool answered = child.firstOf("content").has_value();
  outcome.extension = wordFor(child, answered);
  // Its answer is shown, but no extension is meant to end so.
  if (child.stopReason)
    outcome.failure = std::string("The service extension stopped") +
                      (answered ? " after its answer: " : ": ") + *child.stopReason;
  TargetProcess::report(std::move(child), outcome);
  return VorselKelp::Done{};
}

/// Nothing is shown: the application is started in the background, and gets the payload.
Result<PushOutcome> handOver(const Target& target, const Push& push) {
  TargetProcess process(target, device::ProcessKind::application, push.timeLimit);
  process.addFlag("--background");
  process.read(push.payload);
  auto child = process.run(push.quiet, push.stop);
  if (!child) return child.error();
  if (push.stop.stop_requested()) return stopped();
  if (child->stopReason) return Error{"The application stopped: " + *child->stopReason};
  if (child->exitStatus != 0) return TargetProcess::failureOf(*child, "The application");
  PushOutcome outcome;
  outcome.silent = true;
  outcome.extension = "notRun";
  outcome.shown.identifier = push.identifier;
  outcome.delegate = child->valuesOf("delegate");
  TargetProcess::report(*std::move(child), outcome);
  return outcome;
}

Result<PushOutcome> show(const Target& target, const Push& push) {
  auto simulated = target.device();
  if (const auto status = allowed(simulated); !status) return status.error();
  auto delivered = extend(target, push);
  if (!delivered) return delivered.error();
  PushOutcome outcome;
  outcome.extension = "notRun";
  if (delivered->result->kind == RemoteKind::changeable) {
    if (const auto status = noteExtension(std::move(delivered->extension.outcome), outcome); !status)
      return status.error();
  }
  auto shown = simulated.deliver(std::move(delivered->result->request));
  if (!shown) return Error{"The notification was not delivered. " + shown.error().description, notNow};
  outcome.shown = std::move(*shown);
  outcome.actions = simulated.actionsOf(outcome.shown.content.categoryIdentifier);
  return outcome;
}

}  // namespace

Result<PushOutcome> deliver(const Target& target, Push push) {
  const auto json = JSONAny::decode(push.payload);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) return Error{"The payload is no JSON object"};
  if (push.identifier.empty()) push.identifier = makeIdentifier();
  if (VorselKelp::remoteKind(*json) != RemoteKind::silent) return show(target, push);
  if (!target.device().remoteToken()) return noToken();
  return handOver(target, push);
}

Result<PushOutcome> receive(const Target& target, Push push) {
  const auto off = target.device().isOff();
  if (!off) return off.error();
  if (!*off) {
    if (const auto status = deliverArrived(target, push.stop, [](const auto&) {}); !status)
      return status.error();
    return deliver(target, std::move(push));
  }
  if (!target.device().remoteToken()) return noToken();
  if (push.identifier.empty()) push.identifier = makeIdentifier();
  PushOutcome outcome;
  outcome.extension = "notRun";
  outcome.kept = true;
  outcome.shown.identifier = push.identifier;
  const auto place =
      target.arrivals().put({std::move(push.identifier), std::move(push.payload)}, std::nullopt);
  if (!place) return place.error();
  return outcome;
}

Status deliverArrived(const Target& target, const std::stop_token& stop, Told told) {
  using device::Arrivals;
  return target.arrivals().deliver([&](const device::Arrival& arrived) {
    if (stop.stop_requested()) return Arrivals::Taken::notYet;
    const auto outcome = deliver(
        target, {.identifier = arrived.identifier, .payload = arrived.payload, .quiet = true, .stop = stop});
    const int code = outcome ? 0 : outcome.error().code;
    if (code != notWanted) told(outcome);
    return code == notNow ? Arrivals::Taken::notYet : Arrivals::Taken::forGood;
  });
}

}  // namespace phone
