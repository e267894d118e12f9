#include "push/TokenRegistration.h"

#include <optional>

#include "base/FatalError.h"
#include "base/Text.h"
#include "core/SessionStep.h"
#include "push/Permission.h"

namespace VorselKelp {

void TokenRegistration::registerToken(std::span<const std::uint8_t> deviceToken) {
  const std::string token = hexText(deviceToken.data(), deviceToken.size());
  context_->print(token);
  auto& storage = context_->storage;
  if (storage.flag(StorageKey::push)) {
    context_->services->mainQueue->async([weak = weak_from_this(), token] {
      if (const auto self = weak.lock()) self->askPermission(token);
    });
    return;
  }
  storage.transact([&] {
    if (storage.boolean(StorageKey::waitingDelivery) != std::optional(false)) return;
    storage.set(StorageKey::waitingDelivery, true);
    storage.synchronize();
  });
}

void TokenRegistration::askPermission(const std::string& token) {
  context_->services->notificationCenter->requestAuthorization(
      Permission::options, [weak = weak_from_this(), token](bool granted, const std::optional<Error>&) {
        const auto self = weak.lock();
        if (self && granted) self->permitted(token);
      });
}

void TokenRegistration::permitted(const std::string& token) {
  const auto delegate = context_->state.delegate();
  if (context_->storage.text(StorageKey::token) == token) {
    if (delegate) delegate->vorselInited(true);
    return;
  }
  if (delegate) delegate->notificationTokenChanged(token);
  report(token);
}

void TokenRegistration::report(const std::string& token) {
  auto session = readSessionValues(*context_);
  if (!session) fatalError("registerToken: no session was counted yet; call VorselKellp::initialize first");
  const PushBody body = reports_->push(sessionBlock(*std::move(session)), token);
  requests_->sendPushData(body,
                          [weak = weak_from_this(), token](bool, const VorselRequest::Response& response,
                                                           const std::optional<Error>&) {
                            if (const auto self = weak.lock()) self->reported(response, token);
                          });
}

void TokenRegistration::reported(const VorselRequest::Response& response, const std::string& token) {
  const bool accepted = response && response->statusCode == httpCreated;
  if (const auto delegate = context_->state.delegate()) delegate->vorselInited(accepted);
  if (!accepted) return;
  context_->storage.set(StorageKey::token, token);
  context_->storage.synchronize();
}

}  // namespace VorselKelp
