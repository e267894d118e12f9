#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/URLSession.h"
#include "VorselKelpWebPush/Subscription.h"

namespace VorselKelp::webpush {

// What a push service is asked for each message (RFC 8030). Any thread.

struct RequestOptions {
  /// Seconds for which the service keeps a message whose receiver is away; 0: it is delivered now or never.
  std::uint32_t ttl = 0;
  /// "very-low", "low", "normal" or "high"; empty: left to the service, which takes "normal".
  std::string urgency{};
  /// A message that waits is replaced by the next one of the same topic: 32 characters of base64url at most;
  /// see topicOf(). Empty: none.
  std::string topic{};
  /// From vapidAuthorization(); empty: the sender stays unknown.
  std::string authorization{};
};

/// Posts the text, encrypted for the subscription. Errors are those of encrypt(), and an urgency or a
/// topic that there is not.
VORSELKELP_API Result<platform::URLRequest> makeRequest(std::string_view text,
                                                        const Subscription& subscription,
                                                        const RequestOptions& options);

/// A topic of 32 characters for any identifier: of its SHA-256, so that the service does not learn it.
VORSELKELP_API std::string topicOf(std::string_view identifier);

}  // namespace VorselKelp::webpush
