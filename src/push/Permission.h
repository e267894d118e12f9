#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/ui/ViewController.h"
#include "analytics/ActivityEvents.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// Asks the user for the permission to notify, and registers for remote notifications when it is there.
class Permission : public std::enable_shared_from_this<Permission> {
 public:
  static constexpr unsigned options =
      platform::authorizeAlert | platform::authorizeBadge | platform::authorizeSound;

  Permission(std::shared_ptr<CoreContext> context, std::shared_ptr<ActivityEvents> activity)
      : context_(std::move(context)), activity_(std::move(activity)) {}

  /// Start-up: registers where the user has allowed it, and says so where not. Asks nobody.
  void checkAtStart();
  void askForNotificationsPermission();
  /// The same; when the remote configuration names a page of the publisher's, that page is shown over
  /// `controller` first, and the user is asked only when the page says so. Nothing once the user has decided,
  /// and nothing but a line while the page could not run: the next start can ask.
  void askForNotificationPermissionWith(const std::shared_ptr<ui::ViewController>& controller);

 private:
  void checked(platform::AuthorizationStatus status);
  void asked(bool granted);
  void presentPage(const std::shared_ptr<ui::ViewController>& from);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<ActivityEvents> activity_;
};

}  // namespace VorselKelp
