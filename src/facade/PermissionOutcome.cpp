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
  const auto context = context_.lock();
  if (!context) return;
  if (const auto tracker = Facade::of(*context)->tracker()) tracker->send(askedEvent());
  const auto stored = context->services->userDefaults->standard()->object(statusKey);
  const auto* status = stored ? stored->as<std::int64_t>() : nullptr;
  previous_ = status ? *status : 0;
}

void PermissionOutcome::request() {
  const auto context = context_.lock();
  if (!context) return;
  context->services->mainQueue->async([self = shared_from_this()] {
    if (const auto alive = self->context_.lock()) self->ask(*alive);
  });
}

void PermissionOutcome::ask(VorselKelp::CoreContext& context) {
  context.services->notificationCenter->requestAuthorization(
      VorselKelp::Permission::options,
      [self = shared_from_this()](bool, const std::optional<VorselKelp::Error>&) {
        const auto alive = self->context_.lock();
        if (!alive) return;
        alive->services->notificationCenter->getNotificationSettings(
            [self](const VorselKelp::platform::NotificationSettings& settings) {
              if (const auto core = self->context_.lock())
                self->answered(*core, static_cast<std::int64_t>(settings.authorizationStatus));
            });
      });
}

void PermissionOutcome::answered(VorselKelp::CoreContext& context, std::int64_t status) const {
  context.services->userDefaults->standard()->setObject(statusKey, {status});
  const auto tracker = Facade::of(context)->tracker();
  if (status == previous_ || !tracker) return;
  if (status >= 2 && status <= 4) tracker->send(allowedEvent());
  if (status == 1) tracker->send(blockedEvent());
}

}  // namespace BrellixPush
