#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "VorselKelpSystem/RemoteNotification.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PayloadFile.h"
#include "brellixctl/TextFile.h"
#include "brellixctl/demo/DemoFiles.h"
#include "brellixctl/try/StandIns.h"
#include "brellixctl/try/Trial.h"

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
using VorselKelp::Result;
namespace device = VorselKelp::simulator;
namespace system = VorselKelp::system;

namespace {

constexpr const char* triedIdentifier = "try";

/// Requests for which nobody stands in get no further than a proxy that is not there. Before any thread.
void fenceProcesses() {
  for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
    ::setenv(name, "http://127.0.0.1:9", 1);
  ::unsetenv("NO_PROXY");
  ::setenv("no_proxy", "127.0.0.1", 1);
}

void set(JSONAny::Dictionary& members, const std::string& key, JSONAny value) {
  std::erase_if(members, [&](const auto& member) { return member.key == key; });
  members.push_back({key, std::move(value)});
}

/// The manifest of --app, with all the application's own addresses at `server`.
Result<JSONAny> manifestFor(const CommonOptions& common, const std::string& server) {
  auto example = demoManifest(server, "core");
  if (common.manifest.empty()) return example;
  const auto target = Target::describe("-", common.manifest);
  if (!target) return target.error();
  const auto text = readTextFile(common.manifest);
  if (!text) return text.error();
  const auto json = JSONAny::decode(*text);
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) return Error{common.manifest + " is no JSON"};
  auto members = *json->as<JSONAny::Dictionary>();
  set(members, "endpoints", *example.find("endpoints"));
  const auto& programs = target->manifest.programs;  // the file names them against its own folder
  JSONAny::Dictionary named;
  const auto name = [&](const char* key, const std::string& path) {
    if (!path.empty()) named.push_back({key, path});
  };
  name("application", programs.application);
  name("service", programs.service);
  name("content", programs.content);
  if (!named.empty()) set(members, "programs", std::move(named));
  return JSONAny(std::move(members));
}

/// The publisher's delegate has no call for a deep link, so that the facade drops it.
bool dropDeepLinks(PayloadLint& lint) {
  bool dropped = false;
  for (auto& tap : lint.taps) {
    if (tap.opens != PayloadLint::Tap::Opens::deepLink) continue;
    tap.opens = PayloadLint::Tap::Opens::nothing;
    dropped = true;
  }
  return dropped;
}

std::vector<std::string> notesOn(const PayloadLint& lint, const device::Manifest& manifest) {
  std::vector<std::string> notes;
  for (const auto& error : lint.errors) notes.push_back("Lint says: " + error + ".");
  for (const auto& stop : lint.stops) notes.push_back("Lint says: " + stop.text + ".");
  if (!lint.carousel) return notes;
  const auto& category = lint.shows.category;
  if (std::ranges::find(manifest.contentCategories, category) == manifest.contentCategories.end())
    notes.push_back(
        "A phone does not start the content extension for this category; here it was started all the same.");
  if (!lint.carousel->arrows && lint.carousel->pages.size() > 1)
    notes.push_back("Without arrows nobody comes to the pages behind the first; they were not tried.");
  return notes;
}

/// The application to try it with, on a device in `folder`, with its servers at `server`.
Result<Target> applicationIn(const TemporaryFolder& folder, const CommonOptions& common,
                             const std::string& server) {
  if (folder.path().empty()) return Error{"Cannot make a folder for the trial's device"};
  const auto manifest = manifestFor(common, server);
  if (!manifest) return manifest.error();
  return Target::open(folder.path() + "/device", folder.write("application.json", *manifest));
}

Result<TrialReport> tryOut(const CommonOptions& common, const TryRequest& request,
                           const std::string& payload) {
  const auto decoded = decodePayload(payload, request.payloadPath);
  if (!decoded) return decoded.error();
  auto lint = VorselKelp::lintPayload(payload, triedIdentifier, system::unchangedContent(*decoded));
  if (!request.anywhere) fenceProcesses();
  const TemporaryFolder folder;
  const auto server = CollectionServer::start({});
  if (!server) return server.error();
  const auto target = applicationIn(folder, common, (*server)->url());
  if (!target) return target.error();
  auto standIns = request.anywhere ? Result<StandIns>(StandIns()) : StandIns::start(payload, lint);
  if (!standIns) return standIns.error();
  auto notes = notesOn(lint, target->manifest);
  if (target->manifest.layer == device::Manifest::Layer::facade && dropDeepLinks(lint))
    notes.push_back("Through the facade no deep link reaches the application; none is expected.");
  const Comparison comparison(std::move(lint), (*server)->url(),
                              [&](std::string text) { return standIns->original(std::move(text)); });
  TrialPlan plan{*target, folder.writeText("payload.json", standIns->masked(payload)), folder.path(),
                 triedIdentifier};
  auto parts = Trial(std::move(plan), comparison).run();
  if (!parts) return parts.error();
  return TrialReport{request.payloadPath, standIns->addresses(), std::move(notes), *std::move(parts)};
}

VorselKelp::Status writePage(const std::string& path, const TrialReport& report) {
  std::ofstream file(path, std::ios::binary);
  file << trialPage(report);
  file.close();
  if (!file) return Error{"Cannot write " + path + ": " + std::strerror(errno)};
  return VorselKelp::Done{};
}

}  // namespace

int runTry(const CommonOptions& common, const TryRequest& request) {
  const auto payload = readPayload(request.payloadPath);
  if (!payload) return fail(payload.error());
  const auto report = tryOut(common, request, *payload);
  if (!report) return fail(report.error());
  if (!request.report.empty()) {
    if (const auto written = writePage(request.report, *report); !written) return fail(written.error());
  }
  return answer(toJSON(*report), inWords(*report), report->failure());
}

}  // namespace brellixctl
