#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

/// Where a receiver takes messages, and what they are encrypted with. Whoever has it can send.
struct Subscription {
  std::string endpoint;  ///< see parseEndpoint()
  std::string auth;      ///< 16 bytes
  std::string p256dh;    ///< 65 bytes: the receiver's public key as an uncompressed point
  friend bool operator==(const Subscription&, const Subscription&) = default;
};

/// {"endpoint":…,"expirationTime":null,"keys":{"auth":…,"p256dh":…}} as JSON in UTF-8, the keys in base64url.
/// Empty when the endpoint is no UTF-8, which none is that parseEndpoint() takes. Any thread.
VORSELKELP_API std::string subscriptionText(const Subscription& subscription);

/// Takes that text, with its members in any order and others beside them, or its hexadecimal digits, as which
/// a device token is reported; blanks around it count for nothing. The endpoint and the key's point are
/// checked; an error is one line. Any thread.
VORSELKELP_API Result<Subscription> parseSubscription(std::string_view text);

}  // namespace VorselKelp::webpush
