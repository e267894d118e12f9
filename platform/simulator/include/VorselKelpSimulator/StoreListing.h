#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {

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
  std::string problem;    ///< empty: it is whole and was read
  bool damaged = false;   ///< else the problem is one of reaching it
  bool replaced = false;  ///< a damaged predecessor lies beside it, named like it with ".damaged" added
  /// Its texts, numbers and flags by key; null for a list or a map.
  JSONAny values = JSONAny::Dictionary{};
};

/// Reads all of the application group's store and compares its parts with each other. Changes nothing, and
/// reads what can't be written as well.
VORSELKELP_API StoreHealth inspectGroupStore(const Manifest& manifest, const DeviceHome& home);

}  // namespace VorselKelp::simulator
