#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/platform/UniqueFunction.h"

namespace gateway {

enum class PushType { alert, background, voip, other };

/// What a provider wants to be delivered; checked, but for the device.
struct Notification {
  std::string device;      ///< the token's bytes
  std::string topic;       ///< the application's identifier
  std::string identifier;  ///< a UUID in lower case, the provider's or a new one
  std::string collapse{};  ///< what is shown under it is replaced; empty: nothing is
  PushType type = PushType::alert;
  int priority = 10;  ///< 10: at once, 5: when it suits the device, 1: when nothing else is to do
  /// Seconds since 1970 until when it is kept for a device that is away; 0: not at all. Without one: as long
  /// as it is usual where it is kept.
  std::optional<std::int64_t> expiration{};
  std::string payload{};  ///< a JSON object
};

/// What the provider is answered.
struct Answer {
  int status = 200;
  std::string_view reason{};                ///< of the protocol's table, a literal; empty with 200
  std::optional<std::int64_t> timestamp{};  ///< with 410: milliseconds since 1970, when the device had gone
  std::string retryAfter{};                 ///< the value of that header; empty: none
};

/// Where notifications go on.
class NextHop {
 public:
  using Answered = VorselKelp::platform::UniqueFunction<void(Answer)>;

  virtual ~NextHop() = default;
  /// Whether the token has the form of those that are reached this way; without asking anybody.
  [[nodiscard]] virtual bool takes(std::string_view device) const = 0;
  /// Called on the gateway's thread, where it must not wait. Answers once, on any thread, also before it
  /// returns: when whoever comes next has taken the notification, or why it did not.
  virtual void deliver(Notification notification, Answered answered) = 0;
};

}  // namespace gateway
