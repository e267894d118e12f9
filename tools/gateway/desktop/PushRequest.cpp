#include "gateway/desktop/PushRequest.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "VorselKelpWebPush/Endpoint.h"
#include "VorselKelpWebPush/Envelope.h"
#include "VorselKelpWebPush/Message.h"
#include "VorselKelpWebPush/Request.h"
#include "VorselKelpWebPush/Subscription.h"

namespace gateway {
namespace {

namespace webpush = VorselKelp::webpush;

constexpr std::uint32_t week = 7 * 24 * 60 * 60;

const Answer badDevice{400, "BadDeviceToken"};
const Answer tooLarge{413, "PayloadTooLarge"};
const Answer broken{500, "InternalServerError"};

std::uint32_t lifeOf(std::optional<std::int64_t> expiration, std::int64_t now) {
  if (!expiration) return week;
  constexpr std::int64_t longest = std::numeric_limits<std::int32_t>::max();
  return *expiration <= now ? 0 : static_cast<std::uint32_t>(std::min(*expiration - now, longest));
}

const char* urgencyOf(int priority) {
  return priority >= 10 ? "high" : priority >= 5 ? "normal" : "low";
}

/// What is tried once and never kept has no time to be late at.
webpush::Envelope envelopeOf(const Notification& notification, std::int64_t now) {
  webpush::Envelope envelope{notification.identifier, notification.collapse, {}};
  if (notification.expiration && *notification.expiration > now)
    envelope.expiration = notification.expiration;
  return envelope;
}

}  // namespace

std::variant<PushRequest, Answer> makePushRequest(const Notification& notification, std::int64_t now,
                                                  Authorizations* authorizations, bool loopback) {
  const auto subscription = webpush::parseSubscription(notification.device);
  if (!subscription) return badDevice;
  const auto endpoint = webpush::parseEndpoint(subscription->endpoint);
  if (!endpoint || (!endpoint->secure && !(loopback && endpoint->loopback))) return badDevice;
  const auto text = webpush::putInto(envelopeOf(notification, now), notification.payload);
  if (!text) return Answer{400, "BadCollapseId"};
  if (notification.type == PushType::voip || text->size() > webpush::mostInClear) return tooLarge;

  webpush::RequestOptions options{.ttl = lifeOf(notification.expiration, now),
                                  .urgency = urgencyOf(notification.priority)};
  if (!notification.collapse.empty())
    options.topic = webpush::topicOf(notification.topic + '\0' + notification.collapse);
  if (authorizations != nullptr) {
    auto value = authorizations->valueFor(subscription->endpoint, endpoint->origin);
    if (!value) return broken;
    options.authorization = *std::move(value);
  }
  auto request = webpush::makeRequest(*text, *subscription, options);
  if (!request) return broken;
  return PushRequest{*std::move(request), endpoint->origin};
}

}  // namespace gateway
