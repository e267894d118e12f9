#include "facade/PermissionOutcome.h"

#include <optional>

#include "facade/BrellixEventTracker.h"
#include "facade/Facade.h"
#include "push/Permission.h"

namespace BrellixPush {
namespace {

constexpr const char* statusKey = "com.brellix.push.auth_status";

}  // namespace

void PermissionOutcome::begin() {
  if (const auto tracker = Facade::of(*context_)->tracker()) tracker->send(askedEvent());
  const auto stored = context_->services->userDefaults->standard()->object(statusKey);
  const auto* status = stored ? stored->as<std::int64_t>() : nullptr;
  previous_ = status ? *status : 0;
}

void PermissionOutcome::request() {
  context_->services->notificationCenter->requestAuthorization(
      VorselKelp::Permission::options,
      [self = shared_from_this()](bool, const std::optional<VorselKelp::Error>&) {
        self->context_->services->notificationCenter->getNotificationSettings(
            [self](const VorselKelp::platform::NotificationSettings& settings) {
              self->answered(static_cast<std::int64_t>(settings.authorizationStatus));
            });
      });
}

void PermissionOutcome::answered(std::int64_t status) {
  context_->services->userDefaults->standard()->setObject(statusKey, {status});
  const auto tracker = Facade::of(*context_)->tracker();
  if (status == previous_ || !tracker) return;
  if (status >= 2 && status <= 4) tracker->send(allowedEvent());
  if (status == 1) tracker->send(blockedEvent());
}

}  // namespace BrellixPush
