#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/Notification.h"
#include "json/Decoder.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// A notification's user information, made ready for reading as any of the roots.
class Payload {
 public:
  /// Code of the error for bytes that are no JSON text.
  static constexpr int unreadableBytes = 1;

  /// An error when the information is no JSON object.
  static Result<Payload> open(const platform::UserInfo& userInfo);

  [[nodiscard]] const boost::json::object& root() const { return document_.root().get_object(); }
  [[nodiscard]] Result<PushObj> pushObj() const { return json::decode<PushObj>(document_.root()); }
  [[nodiscard]] Result<PCampaignObject> campaign() const {
    return json::decode<PCampaignObject>(document_.root());
  }
  [[nodiscard]] Result<MultiMessagePush> multiMessagePush() const {
    return json::decode<MultiMessagePush>(document_.root());
  }

 private:
  explicit Payload(json::Document document) : document_(std::move(document)) {}
  json::Document document_;
};

/// The one received object of a single-message push.
[[nodiscard]] VorselReceivedObject receivedObject(const PushObj& push, const std::string& identifier);

/// One received object per message of a campaign, in order.
[[nodiscard]] std::vector<VorselReceivedObject> receivedObjects(const PCampaignObject& campaign,
                                                                const std::string& identifier);

}  // namespace VorselKelp
