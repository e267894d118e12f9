#include "host/RecordForms.h"

namespace VorselKelp::simulator {
namespace {

template <class T>
JSONAny form(const T& value) {
  return JSONAny(value);
}

JSONAny form(const Action& action);
JSONAny form(const Conversion& conversion);

template <class T>
JSONAny form(const std::vector<T>& values) {
  JSONAny::List list;
  for (const auto& value : values) list.push_back(form(value));
  return list;
}

class Members {
 public:
  template <class T>
  Members& add(const char* key, const T& value) {
    members_.push_back({key, form(value)});
    return *this;
  }
  template <class T>
  Members& add(const char* key, const std::optional<T>& value) {
    return value ? add(key, *value) : *this;
  }
  [[nodiscard]] JSONAny take() { return std::move(members_); }

 private:
  JSONAny::Dictionary members_;
};

JSONAny form(const Action& action) {
  return Members().add("action", action.action).add("title", action.title).add("url", action.url).take();
}

JSONAny form(const Conversion& conversion) {
  return Members().add("url", conversion.url).add("t", conversion.t).take();
}

JSONAny formOf(const VorselReceivedObject& message) {
  Members members;
  members.add("notifId", message.notifId).add("title", message.title).add("renotify", message.renotify);
  members.add("el", message.el).add("ap", message.ap).add("an", message.an).add("tc", message.tc);
  members.add("dc", message.dc).add("cl", message.cl).add("tag", message.tag).add("sound", message.sound);
  members.add("vibrate", message.vibrate).add("badge", message.badge).add("image", message.image);
  members.add("body", message.body).add("actions", message.actions).add("data", message.data);
  members.add("silent", message.silent).add("impTracker", message.impTracker).add("taskId", message.taskId);
  return members.add("scl", message.scl).take();
}

}  // namespace

JSONAny encodeRecord(const NotificationObject& object) {
  JSONAny::List messages;
  for (const auto& message : object.notification) messages.push_back(formOf(message));
  return JSONAny::Dictionary{{"notification", std::move(messages)}};
}

JSONAny encodeRecord(const Geofences& geofences) {
  JSONAny::List list;
  for (const auto& gl : geofences.gl) {
    Members members;
    members.add("c", gl.c).add("e", gl.e).add("er", gl.er).add("lr", gl.lr).add("r", gl.r).add("id", gl.id);
    list.push_back(members.take());
  }
  return JSONAny::Dictionary{{"gl", std::move(list)}};
}

JSONAny encodeRecord(const Beacons& beacons) {
  JSONAny::List list;
  for (const auto& b : beacons.bl) {
    Members members;
    members.add("id", b.id).add("ib", b.ib).add("major", b.major).add("minor", b.minor);
    list.push_back(members.add("distance", b.distance).take());
  }
  return JSONAny::Dictionary{{"bl", std::move(list)}};
}

}  // namespace VorselKelp::simulator
