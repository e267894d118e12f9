#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "VorselKelpSystem/Badge.h"
#include "VorselKelpSystem/NotificationCenter.h"

namespace VorselKelp::freedesktop {

// What a notification centre asks of the desktop.

/// The button that a campaign's notification gets, behind its own: its messages are to be paged through.
inline constexpr const char* campaignAction = "vorselkelp-campaign";

/// The buttons with which a presenter of makePresenter() shows a notification of that category.
[[nodiscard]] VORSELKELP_API platform::NotificationCategory buttonsOf(
    const platform::NotificationRequest& request, platform::NotificationCategory category);

[[nodiscard]] VORSELKELP_API std::shared_ptr<system::NotificationPresenter> makePresenter(
    std::shared_ptr<BusNotifications> notifications);

class IconBadge : public system::Badge {
 public:
  /// What was kept: too late when somebody has shown another number since. Main thread.
  virtual void showFirst(std::int64_t number) = 0;
};

[[nodiscard]] VORSELKELP_API std::shared_ptr<IconBadge> makeIconBadge(std::shared_ptr<LauncherBadge> badge);

}  // namespace VorselKelp::freedesktop
