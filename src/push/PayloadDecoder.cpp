#include "push/PayloadDecoder.h"

#include <utility>

namespace VorselKelp {
namespace {

Result<std::string> serialized(const JSONAny::Dictionary& dictionary) {
  return JSONAny(dictionary).encode();
}

VorselReceivedObject flattened(const std::optional<N>& message, std::optional<std::string> title,
                               std::optional<std::vector<std::string>> trackers,
                               const std::string& identifier) {
  VorselReceivedObject object;
  object.notifId = identifier;
  object.title = std::move(title);
  object.impTracker = std::move(trackers);
  if (!message) return object;
  const N& n = *message;
  object.renotify = n.renotify;
  object.el = n.el;
  object.ap = n.ap;
  object.an = n.an;
  object.tc = n.tc;
  object.dc = n.dc;
  object.cl = n.cl;
  object.tag = n.tag;
  object.sound = n.sound;
  object.vibrate = n.vibrate;
  object.badge = n.badge;
  object.image = n.image;
  object.body = n.body;
  object.actions = n.actions;
  object.data = n.data;
  object.silent = n.silent;
  object.taskId = n.tid;
  object.scl = n.scl;
  return object;
}

}  // namespace

Result<Payload> Payload::open(const platform::UserInfo& userInfo) {
  std::string written;
  if (!userInfo.bytes()) {
    auto bytes = serialized(userInfo.dictionary() ? *userInfo.dictionary() : JSONAny::Dictionary{});
    if (!bytes) return bytes.error();
    written = *std::move(bytes);
  }
  auto document = json::Document::parse(userInfo.bytes() ? *userInfo.bytes() : written);
  if (!document) return Error{document.error().description, unreadableBytes};
  if (!document->root().is_object()) return Error{"the payload is no JSON object"};
  return Payload(*std::move(document));
}

VorselReceivedObject receivedObject(const PushObj& push, const std::string& identifier) {
  const NotificationBody& body = push.aps.notificationBody;
  return flattened(body.n, body.title, body.t, identifier);
}

std::vector<VorselReceivedObject> receivedObjects(const PCampaignObject& campaign,
                                                  const std::string& identifier) {
  std::vector<VorselReceivedObject> objects;
  objects.reserve(campaign.p.size());
  for (const P& message : campaign.p)
    objects.push_back(flattened(message.o, message.t, message.i, identifier));
  return objects;
}

}  // namespace VorselKelp
