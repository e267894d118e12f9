#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpSimulator/DeviceInspection.h"
#include "VorselKelpSimulator/StoreListing.h"
#include "brellixctl/Operations.h"
#include "brellixctl/doctor/Finding.h"

namespace brellixctl {

/// The key that the application's core takes; empty when it has none.
std::string apiKeyOf(const VorselKelp::simulator::Manifest& manifest);

// Each looks at one side of an application and its device, and changes neither.

Findings checkManifest(const VorselKelp::simulator::Manifest& manifest);
Findings checkGroup(const VorselKelp::simulator::Manifest& manifest);
/// `stored`: what the group's store holds.
Findings checkSwitches(const VorselKelp::simulator::Manifest& manifest, const VorselKelp::JSONAny& stored);
/// Asks each server for something harmless; waits for the slowest of them, ten seconds at most.
Findings checkEndpoints(const VorselKelp::simulator::Manifest& manifest);
Findings checkHome(const Target& target, const VorselKelp::simulator::DeviceHealth& device);
/// Whether the servers that an installation has kept are still the manifest's.
Findings checkStoredAddresses(const VorselKelp::simulator::Manifest& manifest,
                              const VorselKelp::JSONAny& stored);
Findings checkPower(const VorselKelp::simulator::DeviceHealth& device);
// The next three find nothing on a device that can't be used.
Findings checkPermission(const VorselKelp::simulator::DeviceHealth& device);
Findings checkToken(const VorselKelp::simulator::DeviceHealth& device, const VorselKelp::JSONAny& stored);
Findings checkStore(const VorselKelp::simulator::DeviceHealth& device,
                    const VorselKelp::simulator::StoreHealth& store);
/// Whether the pictures that delivered carousels bring for their arrows can be kept.
Findings checkArrows(const VorselKelp::simulator::Manifest& manifest,
                     const VorselKelp::simulator::DeviceHealth& device);

}  // namespace brellixctl
