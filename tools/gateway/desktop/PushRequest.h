#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "VorselKelp/platform/URLSession.h"
#include "gateway/Notification.h"
#include "gateway/desktop/Authorizations.h"

namespace gateway {

/// What a push service is asked for a notification.
struct PushRequest {
  VorselKelp::platform::URLRequest request;
  std::string origin;  ///< the push service's
};

/// The request, or why there is none: what the provider is answered. `now` is in seconds since 1970;
/// `authorizations` may be null, then the sender stays unknown; `loopback`: push services of this machine
/// are taken too, and without encryption on the way.
std::variant<PushRequest, Answer> makePushRequest(const Notification& notification, std::int64_t now,
                                                  Authorizations* authorizations, bool loopback);

}  // namespace gateway
