#pragma once

#include "VorselKelp/JSONAny.h"
#include "brellixctl/Operations.h"
#include "brellixctl/doctor/Finding.h"

namespace brellixctl {

// Each looks at one side of an application and its device, and changes neither.

Findings checkManifest(const VorselKelp::linux_platform::Manifest& manifest);
Findings checkGroup(const VorselKelp::linux_platform::Manifest& manifest);
/// `stored`: what the group's store holds.
Findings checkSwitches(const VorselKelp::linux_platform::Manifest& manifest,
                       const VorselKelp::JSONAny& stored);
/// Asks each server for something harmless; waits for the slowest of them, ten seconds at most.
Findings checkEndpoints(const VorselKelp::linux_platform::Manifest& manifest);
Findings checkPermission(const Target& target);
Findings checkToken(const Target& target, const VorselKelp::JSONAny& stored);
Findings checkStore(const Target& target, const VorselKelp::JSONAny& stored);

}  // namespace brellixctl
