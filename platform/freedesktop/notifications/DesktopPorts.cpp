#include "VorselKelpFreedesktop/DesktopPorts.h"

#include "VorselKelpSystem/RemoteNotification.h"
#include "notifications/NotificationTexts.h"

#include <atomic>
#include <string>
#include <utility>
#include <vector>

namespace VorselKelp::freedesktop {
namespace {

class DesktopPresenter final : public system::NotificationPresenter {
 public:
  explicit DesktopPresenter(std::shared_ptr<BusNotifications> notifications)
      : notifications_(std::move(notifications)) {}
  void show(const platform::NotificationRequest& request, const platform::NotificationCategory& category,
            Shown shown) override {
    notifications_->show(request, buttonsOf(request, category), std::move(shown));
  }
  void takeAway(const std::vector<std::string>& identifiers) override { notifications_->remove(identifiers); }

 private:
  const std::shared_ptr<BusNotifications> notifications_;
};

class LauncherIconBadge final : public IconBadge {
 public:
  explicit LauncherIconBadge(std::shared_ptr<LauncherBadge> badge) : badge_(std::move(badge)) {}
  void show(std::int64_t number) override {
    shown_ = true;
    badge_->setBadge(number);
  }
  void showFirst(std::int64_t number) override {
    if (number > 0 && !shown_) badge_->setBadge(number);
  }

 private:
  const std::shared_ptr<LauncherBadge> badge_;
  std::atomic<bool> shown_ = false;
};

}  // namespace

platform::NotificationCategory buttonsOf(const platform::NotificationRequest& request,
                                         platform::NotificationCategory category) {
  if (system::isCampaign(request.content.userInfo))
    category.actions.push_back({.identifier = campaignAction, .title = campaignLabel});
  return category;
}

std::shared_ptr<system::NotificationPresenter> makePresenter(
    std::shared_ptr<BusNotifications> notifications) {
  return std::make_shared<DesktopPresenter>(std::move(notifications));
}

std::shared_ptr<IconBadge> makeIconBadge(std::shared_ptr<LauncherBadge> badge) {
  return std::make_shared<LauncherIconBadge>(std::move(badge));
}

}  // namespace VorselKelp::freedesktop
