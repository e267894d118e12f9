#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::freedesktop {

/// The number on the application's icon in docks that listen to launcher entries. Whether any dock does
/// cannot be known. Docks forget the number when the process ends, or when this object goes.
class LauncherBadge {
 public:
  virtual ~LauncherBadge() = default;
  /// 0 and negative values show none. Any thread; what prevents it is a line on standard error.
  virtual void setBadge(std::int64_t value) = 0;
  /// Whether the bus has every value that was set. Main thread.
  [[nodiscard]] virtual bool idle() const = 0;
};

/// `applicationIdentifier` is the name of the application's desktop entry, without ".desktop". `busAddress`
/// empty: the bus of the user's session. The main thread has to run the default main context of GLib.
VORSELKELP_API std::shared_ptr<LauncherBadge> makeLauncherBadge(
    std::string applicationIdentifier, std::shared_ptr<platform::MainQueue> mainQueue,
    std::string busAddress = {});

}  // namespace VorselKelp::freedesktop
