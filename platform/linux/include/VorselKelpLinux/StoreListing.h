#pragma once

#include "VorselKelp/JSONAny.h"
#include "VorselKelpLinux/DeviceHome.h"
#include "VorselKelpLinux/Runtime.h"

namespace VorselKelp::linux_platform {

/// Everything that the application group's store holds, key by key; an empty object when there is none, or
/// when the device does not know the group.
JSONAny listGroupDefaults(const Manifest& manifest, const DeviceHome& home);

/// The same of the own domain of one of the application's processes.
JSONAny listStandardDefaults(const Manifest& manifest, const DeviceHome& home, ProcessKind kind);

}  // namespace VorselKelp::linux_platform
