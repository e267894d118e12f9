#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/doctor/Checks.h"
#include "brellixctl/doctor/desktop/DesktopChecks.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace device = VorselKelp::simulator;

namespace {

const char* word(Finding::State state) {
  if (state == Finding::State::fine) return "ok";
  return state == Finding::State::notice ? "notice" : "fault";
}

JSONAny::Dictionary toJSON(const Findings& findings) {
  JSONAny::List list;
  for (const auto& [state, check, what, mend] : findings) {
    list.push_back(
        JSONAny::Dictionary{{"state", word(state)}, {"check", check}, {"what", what}, {"mend", mend}});
  }
  return {{"findings", std::move(list)}};
}

std::string inWords(const Findings& findings) {
  std::string words;
  const auto padded = [](std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text + ' ';
  };
  for (const auto& finding : findings) {
    words += padded(word(finding.state), 7) + padded(finding.check, 12) + plainText(finding.what) + '\n';
    if (!finding.mend.empty()) words += padded("", 20) + "-> " + plainText(finding.mend) + '\n';
  }
  return words;
}

Findings examine(const Target& target) {
  const auto& manifest = target.manifest;
  const auto found = device::inspectDevice(target.home, manifest.bundleIdentifier);
  const auto store = device::inspectGroupStore(manifest, target.home);
  Findings findings;
  for (auto part : {checkManifest(manifest), checkHome(target, found), checkPower(found),
                    checkGroup(manifest), checkArrows(manifest, found), checkSwitches(manifest, store.values),
                    checkEndpoints(manifest), checkStoredAddresses(manifest, store.values),
                    checkPermission(found), checkToken(found, store.values), checkStore(found, store)}) {
    std::ranges::move(part, std::back_inserter(findings));
  }
  return findings;
}

}  // namespace

namespace {

int tell(const Findings& findings) {
  const auto faults = std::ranges::count(findings, Finding::State::fault, &Finding::state);
  return answer(toJSON(findings), inWords(findings),
                faults == 0 ? "" : std::to_string(faults) + (faults == 1 ? " fault" : " faults") + " found");
}

/// An application as it is installed on this desktop.
int examineInstalled(const std::string& application) {
  std::string file;
  Findings findings;
  const auto add = [&](Findings part) { std::ranges::move(part, std::back_inserter(findings)); };
  add(checkBus(application));
  const bool bus = findings.front().state == Finding::State::fine;
  add(checkFiles(application, file));
  if (const auto manifest = device::loadManifest(file)) {
    add(checkManifest(*manifest));
    add(checkGroup(*manifest));
    add(checkFolders(*manifest));
    if (bus) add(checkAgent(application, *manifest));
    add(checkEndpoints(*manifest));
  }
  if (bus) add(checkNotifications());
  return tell(findings);
}

}  // namespace

int runDoctor(const CommonOptions& common, const std::string& application) {
  if (!application.empty()) return examineInstalled(application);
  Findings findings;
  const auto target = Target::describe(common.home, common.manifest);
  if (target) {
    findings = examine(*target);
  } else if (target.error().code == wrongUsage) {
    return fail(target.error());
  } else {
    findings.push_back(
        fault("manifest", target.error().description, "Correct the file; examples/news.json is a whole one"));
  }
  return tell(findings);
}

}  // namespace brellixctl
