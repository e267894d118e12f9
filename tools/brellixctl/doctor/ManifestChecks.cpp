#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include "brellixctl/doctor/Checks.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::simulator::Manifest;

namespace {

constexpr const char* keyProperty = "VorselKellpApiKey";

/// Absent when the store has no such switch.
std::optional<bool> storedSwitch(const JSONAny& stored, const char* key) {
  const auto* value = stored.find(key);
  const auto* flag = value != nullptr ? value->as<bool>() : nullptr;
  return flag != nullptr ? std::optional(*flag) : std::nullopt;
}

const char* word(bool raised) {
  return raised ? "on" : "off";
}

}  // namespace

std::string apiKeyOf(const Manifest& manifest) {
  if (manifest.apiKey) return *manifest.apiKey;
  const auto property = manifest.properties.find(keyProperty);
  return property != manifest.properties.end() ? property->second : std::string();
}

Findings checkManifest(const Manifest& manifest) {
  Findings findings{fine("manifest", "describes " + manifest.bundleIdentifier + " " + manifest.version)};
  if (apiKeyOf(manifest).empty()) {
    findings.push_back(fault("manifest", "has no API key: nothing is registered, reported or configured",
                             std::string("Set \"apiKey\" to the key that your account shows, or \"") +
                                 keyProperty + "\" under \"properties\""));
  }
  for (const auto& key : manifest.unknownKeys) {
    auto* kind = key.starts_with("switches.") ? &fault : &notice;
    findings.push_back(kind("manifest", "\"" + key + "\" is no key that means anything: it changes nothing",
                            "Correct its name, or leave it out"));
  }
  const auto& programs = manifest.programs;
  for (const auto* program : {&programs.application, &programs.service, &programs.content}) {
    if (program->empty() || ::access(program->c_str(), X_OK) == 0) continue;
    findings.push_back(
        fault("manifest", *program + " can't be run: " + std::strerror(errno),
              "Build it, or correct \"programs\", whose paths start at the manifest's folder"));
  }
  if (manifest.layer == Manifest::Layer::facade && !manifest.publisher) {
    findings.push_back(notice("manifest",
                              "uses the facade without a publisher: its events carry no publisher id",
                              "Set \"publisher\" to an object with \"id\" and \"source\""));
  }
  return findings;
}

Findings checkGroup(const Manifest& manifest) {
  if (!manifest.appGroupId || manifest.appGroupId->empty()) {
    return {fault("group",
                  "none is named: the extensions and the application share no store, so opened notifications "
                  "have no links and no trackers",
                  "Set \"appGroupId\", such as \"group." + manifest.bundleIdentifier + "\"")};
  }
  if (!std::ranges::count(manifest.groups, *manifest.appGroupId)) {
    return {fault("group",
                  "\"" + *manifest.appGroupId + "\" is not known to the device, as without the entitlement",
                  "Add it to \"groups\", or leave \"groups\" out")};
  }
  return {fine("group", *manifest.appGroupId + " is shared by application and extensions")};
}

Findings checkSwitches(const Manifest& manifest, const JSONAny& stored) {
  Findings findings;
  const auto compare = [&](const char* name, const char* key, const std::optional<bool>& asked) {
    const auto held = storedSwitch(stored, key);
    if (!held || !asked || *held == *asked) return;
    findings.push_back(notice("switches",
                              std::string(name) + " is " + word(*asked) + " in the manifest and " +
                                  word(*held) + " in the store (" + key + ")",
                              "The remote configuration has the last word; else start the application once"));
  };
  const auto& switches = manifest.switches;
  compare("push", "vs_push", switches.push);
  compare("analytics", "vs_analytics", switches.analytics);
  compare("beacon", "vs_beacon", switches.beacon);
  compare("custom", "vs_custom", switches.custom);
  compare("crash", "vs_crash", switches.crash);
  compare("geofence", "vs_geofence", switches.geofence);
  compare("location", "vs_location", switches.location);
  const bool push = storedSwitch(stored, "vs_push").value_or(switches.push.value_or(false));
  if (!push) {
    findings.push_back(fault("switches", "push is off: no token is reported, and no permission asked for",
                             "Set \"push\" to true under \"switches\""));
  }
  if (findings.empty()) findings.push_back(fine("switches", "push is on"));
  return findings;
}

}  // namespace brellixctl
