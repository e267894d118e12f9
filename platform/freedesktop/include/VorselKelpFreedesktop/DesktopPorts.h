#pragma once

#include <cstdint>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "VorselKelpSystem/Badge.h"
#include "VorselKelpSystem/NotificationCenter.h"

namespace VorselKelp::freedesktop {

// What a notification centre asks of the desktop.

[[nodiscard]] VORSELKELP_API std::shared_ptr<system::NotificationPresenter> makePresenter(
    std::shared_ptr<BusNotifications> notifications);

class IconBadge : public system::Badge {
 public:
  /// What was kept: too late when somebody has shown another number since. Main thread.
  virtual void showFirst(std::int64_t number) = 0;
};

[[nodiscard]] VORSELKELP_API std::shared_ptr<IconBadge> makeIconBadge(std::shared_ptr<LauncherBadge> badge);

}  // namespace VorselKelp::freedesktop
