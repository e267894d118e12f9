#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelpLinux/DeviceHome.h"
#include "VorselKelpLinux/Runtime.h"

namespace VorselKelp::linux_platform {

/// Everything that the application group's store holds, key by key; an empty object when there is none, or
/// when the device does not know the group.
VORSELKELP_API JSONAny listGroupDefaults(const Manifest& manifest, const DeviceHome& home);

/// The same of the own domain of one of the application's processes.
VORSELKELP_API JSONAny listStandardDefaults(const Manifest& manifest, const DeviceHome& home,
                                            ProcessKind kind);

/// What an inspection of a store's file found.
struct StoreHealth {
  std::string file;       ///< empty: the device knows no such group
  bool exists = false;    ///< false: nothing was stored yet
  std::string problem;    ///< empty: whole
  bool replaced = false;  ///< a damaged predecessor lies beside it, named like it with ".damaged" added
};

/// Reads all of the application group's store and compares its parts with each other. Changes nothing.
VORSELKELP_API StoreHealth inspectGroupStore(const Manifest& manifest, const DeviceHome& home);

}  // namespace VorselKelp::linux_platform
