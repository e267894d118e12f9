#include <algorithm>
#include <array>

#include "VorselKelpPosix/Hex.h"
#include "brellixctl/doctor/Checks.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace platform = VorselKelp::platform;
using VorselKelp::simulator::Manifest;
namespace device = VorselKelp::simulator;

namespace {

constexpr const char* launchAndAllow =
    "Start the application and allow it: brellixctl launch --answer allow, with --prompt ok where the "
    "publisher's page asks first";

std::string textUnder(const JSONAny& stored, const char* key) {
  const auto* value = stored.find(key);
  const auto* text = value != nullptr ? value->as<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

bool flagUnder(const JSONAny& stored, const char* key) {
  const auto* value = stored.find(key);
  const auto* flag = value != nullptr ? value->as<bool>() : nullptr;
  return flag != nullptr && *flag;
}

/// The configuration becomes a part of the page's script, without its backslashes.
bool isReadableByThePage(std::string configuration) {
  std::erase(configuration, '\\');
  return configuration.empty() || JSONAny::decode(configuration);
}

/// Arrows of the first message hold for all.
bool asksForArrows(const JSONAny& payload) {
  const auto* messages = payload.find("p");
  const auto* list = messages != nullptr ? messages->as<JSONAny::List>() : nullptr;
  const auto* first = list != nullptr && !list->empty() ? list->front().find("o") : nullptr;
  if (first == nullptr) return false;
  return std::ranges::any_of(std::array{"ap", "an"}, [&](const char* arrow) {
    const auto* url = first->find(arrow);
    return url != nullptr && url->as<std::string>() != nullptr;
  });
}

}  // namespace

Findings checkHome(const Target& target, const device::DeviceHealth& health) {
  const auto& application = target.manifest.bundleIdentifier;
  const auto& known = health.applications;
  if (!health.problem.empty()) {
    return {fault("home", health.problem,
                  "Name a folder that you may write with --home; one that is not there yet is made")};
  }
  if (!health.exists) {
    return {notice("home", target.home.path() + " holds no device yet: no application has run on it",
                   "Start the application: brellixctl launch; or name its folder with --home")};
  }
  if (!known.empty() && std::ranges::find(known, application) == known.end()) {
    return {fault("home",
                  "the device does not know " + application + ", but " + known.front() +
                      (known.size() > 1 ? " and others" : ""),
                  "Correct \"bundleIdentifier\", or name another --home")};
  }
  return {fine("home", target.home.path() + " holds the device")};
}

Findings checkArrows(const Manifest& manifest, const device::DeviceHealth& health) {
  const auto group =
      "group." + device::bundleIdentifierOf(manifest, device::ProcessKind::contentExtension) + ".vorselKellp";
  if (std::ranges::count(manifest.groups, group) || !std::ranges::any_of(health.delivered, asksForArrows))
    return {};
  return {fault("group",
                "a carousel asks for pictures of arrows, which are kept in " + group +
                    ", a group that the device does not know: they are not shown",
                "Add it to \"groups\", as well as to the content extension's entitlements on a phone")};
}

Findings checkPower(const device::DeviceHealth& health) {
  if (!health.off) return {};
  return {notice("device", "it is off: of the pushes to an application it gets the last when it is on again",
                 "Turn it on: brellixctl device on")};
}

Findings checkPermission(const device::DeviceHealth& health) {
  if (!health.problem.empty()) return {};
  switch (health.authorization) {
    case platform::AuthorizationStatus::notDetermined:
      return {fault("permission", "the user has not been asked yet: nothing is shown", launchAndAllow)};
    case platform::AuthorizationStatus::denied:
      return {fault("permission", "the user has refused: nothing is shown, and the system asks once only",
                    "The user has to allow it in the system's settings; here: take another --home")};
    default:
      return {fine("permission", "the user allows notifications")};
  }
}

Findings checkToken(const device::DeviceHealth& health, const JSONAny& stored) {
  if (!health.problem.empty()) return {};
  const auto& token = health.token;
  if (!token)
    return {fault("token", "the device has given none out: no push reaches the application", launchAndAllow)};
  const auto hex = VorselKelp::posix::hexOf(*token);
  const auto reported = textUnder(stored, "vs_tok");
  if (reported == hex) return {fine("token", hex.substr(0, 8) + "... is registered with the server")};
  return {fault("token",
                reported.empty() ? "the server has not accepted it yet (vs_tok is not stored)"
                                 : "the server has an older one (" + reported.substr(0, 8) + "...)",
                "Start the application while the collection server answers POST /v2/users with 201")};
}

Findings checkStoredAddresses(const Manifest& manifest, const JSONAny& stored) {
  if (!flagUnder(stored, "vs_reg")) return {};  // the next start writes them anew
  Findings findings;
  const auto compare = [&](auto* kind, const char* key, const std::string& named, const char* mend) {
    const auto kept = textUnder(stored, key);
    if (kept.empty() || kept == named) return;
    findings.push_back(kind("endpoints",
                            std::string("the store keeps ") + kept + " (" + key +
                                "), which counts in place of the manifest's " + named,
                            mend));
  };
  constexpr const char* reported = "The remote configuration may have named it; else take another --home";
  compare(fault, "vs_config_url", manifest.endpoints.tag + "/tag",
          "An installation keeps its servers: take another --home, or go back to the server it knows");
  compare(notice, "vs_activity_url", manifest.endpoints.collection + "/v2/activity?type=mobile", reported);
  compare(notice, "vs_user_url", manifest.endpoints.collection + "/v2/users?type=mobile", reported);
  return findings;
}

Findings checkStore(const device::DeviceHealth& home, const device::StoreHealth& health) {
  const auto& stored = health.values;
  if (!home.problem.empty() && !health.exists) return {};
  if (health.file.empty()) {
    return {fault("store", "there is none, for there is no usable application group", "See \"group\" above")};
  }
  if (!health.exists) {
    return {fault("store", "nothing was stored yet: the application has not run on this device",
                  "Start it: brellixctl launch")};
  }
  if (!health.problem.empty() && !health.damaged) {
    return {fault("store", health.file + " can't be read: " + health.problem,
                  "See that you may read and write it and its folder")};
  }
  if (!health.problem.empty()) {
    return {
        fault("store", health.file + " is damaged: " + health.problem,
              "Start the application: it puts the file aside and begins an empty one, and registers anew")};
  }
  Findings findings;
  if (health.replaced) {
    findings.push_back(
        notice("store", "a damaged store was put aside as " + health.file + ".damaged",
               "Look for the cause (a full disk, a file that something else wrote), then remove it"));
  }
  if (!flagUnder(stored, "vs_reg")) {
    findings.push_back(notice("store", "the installation has not been reported yet (vs_reg)",
                              "Start the application while the collection server answers"));
  }
  if (!isReadableByThePage(textUnder(stored, "vs_autoconf"))) {
    findings.push_back(fault(
        "store", "the stored configuration (vs_autoconf) is no JSON: the permission page is not shown",
        "Publish a configuration that is JSON even without its backslashes, and start the application"));
  }
  findings.push_back(
      fine("store", "is whole, with " + std::to_string(stored.as<JSONAny::Dictionary>()->size()) + " keys"));
  return findings;
}

}  // namespace brellixctl
