#include "push/NotificationReader.h"

namespace VorselKelp {

std::optional<NotificationObject> readNotification(const CoreContext& context,
                                                   const platform::NotificationRequest& request) {
  const auto payload = Payload::open(request.content.userInfo);
  if (!payload) {
    // A dictionary without a JSON form, or bytes of another root than an object, is no payload at all.
    if (payload.error().code == Payload::unreadableBytes)
      context.print("JSON serialization failed " + payload.error().description);
    return std::nullopt;
  }
  const auto push = payload->pushObj();
  if (push) return NotificationObject{{receivedObject(*push, request.identifier)}};
  const auto campaign = payload->campaign();
  if (campaign) return NotificationObject{receivedObjects(*campaign, request.identifier)};
  context.print("Push Campaign object failed " + campaign.error().description + " Push Object failed " +
                push.error().description + " ");
  return std::nullopt;
}

}  // namespace VorselKelp
