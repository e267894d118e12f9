#pragma once

#include "VorselKelp/JSONAny.h"
#include "VorselKelpLinux/DeviceInspection.h"
#include "VorselKelpLinux/StoreListing.h"
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
Findings checkHome(const Target& target, const VorselKelp::linux_platform::DeviceHealth& device);
// The next two find nothing on a device that can't be used.
Findings checkPermission(const VorselKelp::linux_platform::DeviceHealth& device);
Findings checkToken(const VorselKelp::linux_platform::DeviceHealth& device,
                    const VorselKelp::JSONAny& stored);
Findings checkStore(const VorselKelp::linux_platform::StoreHealth& store);
/// Whether the pictures that delivered carousels bring for their arrows can be kept.
Findings checkArrows(const VorselKelp::linux_platform::Manifest& manifest,
                     const VorselKelp::linux_platform::DeviceHealth& device);

}  // namespace brellixctl
