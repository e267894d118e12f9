#pragma once

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

[[nodiscard]] VORSELKELP_API std::shared_ptr<system::Badge> makeIconBadge(
    std::shared_ptr<LauncherBadge> badge);

}  // namespace VorselKelp::freedesktop
