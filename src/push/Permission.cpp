#include "push/Permission.h"

#include <optional>
#include <string>

#include "base/FatalError.h"
#include "prompt/VorselKellpCustomNotificationView.h"

namespace VorselKelp {
namespace {

constexpr std::int64_t permissionRefused = 501;

}  // namespace

void Permission::checkAtStart() {
  context_->services->mainQueue->async([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    self->context_->services->notificationCenter->getNotificationSettings(
        [weak](const platform::NotificationSettings& settings) {
          if (const auto alive = weak.lock()) alive->checked(settings.authorizationStatus);
        });
  });
}

void Permission::checked(platform::AuthorizationStatus status) {
  switch (status) {
    case platform::AuthorizationStatus::authorized:
    case platform::AuthorizationStatus::provisional:
      context_->services->mainQueue->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->context_->state.registrationRequested = true;
        self->context_->services->application->registerForRemoteNotifications();
      });
      return;
    case platform::AuthorizationStatus::denied:
      context_->print("denied");
      return;
    case platform::AuthorizationStatus::notDetermined:
    case platform::AuthorizationStatus::ephemeral:
      context_->print("not determined, ask user for permission now");
      return;
  }
  fatalError("unknown notification authorization status " + std::to_string(static_cast<int>(status)));
}

void Permission::askForNotificationsPermission() {
  context_->services->mainQueue->async([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (!self) return;
    self->context_->services->notificationCenter->requestAuthorization(
        options, [weak](bool granted, const std::optional<Error>&) {
          if (const auto alive = weak.lock()) alive->asked(granted);
        });
  });
}

void Permission::asked(bool granted) {
  if (!granted) {
    activity_->sendStatusEvent(permissionRefused);
    return;
  }
  context_->services->mainQueue->async([weak = weak_from_this()] {
    const auto self = weak.lock();
    if (self && !self->context_->state.registrationRequested)
      self->context_->services->application->registerForRemoteNotifications();
  });
}

void Permission::askForNotificationPermissionWith(const std::shared_ptr<ui::ViewController>& controller) {
  context_->services->notificationCenter->getNotificationSettings(
      [weak = weak_from_this(),
       from = std::weak_ptr(controller)](const platform::NotificationSettings& settings) {
        const auto self = weak.lock();
        if (!self || settings.authorizationStatus != platform::AuthorizationStatus::notDetermined) return;
        if (!self->context_->state.customPrompt) return self->askForNotificationsPermission();
        self->context_->services->mainQueue->async([weak, from] {
          if (const auto alive = weak.lock()) alive->presentPage(from.lock());
        });
      });
}

void Permission::presentPage(const std::shared_ptr<ui::ViewController>& from) {
  const auto page = std::make_shared<VorselKellpCustomNotificationView>(context_, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->askForNotificationsPermission();
  });
  if (const auto usable = page->check(); !usable)
    return context_->print("The permission page is not shown: the stored configuration is no JSON (" +
                           usable.error().description + ")");
  page->modalPresentationStyle = ui::PresentationStyle::overFullScreen;
  context_->services->viewPresenter->present(page, from, false);
}

}  // namespace VorselKelp
