#include "VorselKelpPosix/Hex.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/Operations.h"
#include "brellixctl/TextFile.h"
#include "collection_server/CollectionServer.h"
#include "phone/TargetProcess.h"

namespace brellixctl {

using collection_server::CollectionServer;
using phone::ChildOutcome;
using phone::TargetProcess;
using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
using VorselKelp::posix::hexOf;

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

/// Serves the request's own prompt script, if it has one, for as long as what is returned lives.
Result<std::unique_ptr<CollectionServer>> serveScript(const LaunchRequest& request, TargetProcess& process) {
  if (request.script.empty()) return std::unique_ptr<CollectionServer>();
  auto script = readTextFile(request.script);
  if (!script) return script.error();
  collection_server::ServerOptions options;
  options.script = *std::move(script);
  auto server = CollectionServer::start(std::move(options));
  if (server) process.add("--script-host", (*server)->url());
  return server;
}

Result<std::shared_ptr<Display>> displayFor(const Target& target, const LaunchRequest& request) {
  if (request.window) return Display::users();
  if (request.display) return request.display;
  // The publisher's page is answered in a real engine wherever one can be shown.
  const bool real = !request.prompt.empty() && Display::present() && Display::programsBuilt() &&
                    target.manifest.programs.application.empty();
  return real ? std::make_shared<Display>() : std::shared_ptr<Display>();
}

/// Empty when somebody listened to all of them.
std::string unwatchedBeacons(const ChildOutcome& child) {
  std::string uuids;
  for (const auto& event : child.valuesOf("unwatchedBeacon")) {
    const auto* uuid = event.as<std::string>();
    if (uuid != nullptr) uuids += (uuids.empty() ? "" : ", ") + *uuid;
  }
  return uuids.empty() ? uuids : "The application does not watch beacons with " + uuids;
}

LaunchOutcome outcomeOf(const Target& target, const LaunchRequest& request, ChildOutcome child) {
  LaunchOutcome outcome;
  outcome.failure = unwatchedBeacons(child);
  if (const auto ended = child.firstOf("ended")) {
    const auto* flag = ended->find("initialised");
    outcome.initialised = flag != nullptr && flag->value == JSONAny(true).value;
  }
  if (!outcome.initialised)
    outcome.failure = "The application did not initialise the library; brellixctl doctor says what is wrong";
  auto device = target.device();
  outcome.authorisation = VorselKelp::system::authorizationWord(device.authorization());
  if (const auto token = device.remoteToken()) outcome.token = hexOf(*token);
  outcome.delegate = child.valuesOf("delegate");
  for (std::size_t call = 0; call < request.calls.size(); ++call) {
    auto result = resultOf(child, call);
    if (!result) outcome.failure = "The application's time ended before all calls were made";
    outcome.results.push_back(result.value_or(JSONAny()));
  }
  outcome.pictures = child.valuesOf("picture");
  TargetProcess::report(std::move(child), outcome);
  return outcome;
}

}  // namespace

Result<LaunchOutcome> launch(const Target& target, const LaunchRequest& request) {
  TargetProcess process(target, VorselKelp::simulator::ProcessKind::application, request.timeLimit);
  process.add("--answer", request.answer);
  for (const auto& call : request.calls) process.add("--call", call);
  for (const auto& event : request.beacons) process.add("--beacon", event);
  process.add("--prompt", request.prompt);
  process.add("--pictures", request.pictures);
  if (request.window) process.addFlag("--stay");
  const auto scripts = serveScript(request, process);
  if (!scripts) return scripts.error();
  auto display = displayFor(target, request);
  if (!display) return display.error();
  showOn(process, *display);
  auto child = process.run();
  if (!child) return child.error();
  if (child->stopReason) return Error{"The application stopped: " + *child->stopReason};
  if (child->exitStatus != 0) return TargetProcess::failureOf(*child, "The application");
  return outcomeOf(target, request, *std::move(child));
}

}  // namespace brellixctl
