#include "VorselKelp/RemoteKind.h"

namespace VorselKelp {
namespace {

const JSONAny* presentAt(const JSONAny* json, std::string_view key) {
  const auto* member = json ? json->find(key) : nullptr;
  return member && !member->as<JSONNull>() ? member : nullptr;
}

bool isOne(const JSONAny* flag) {
  return flag && (*flag == JSONAny(1) || *flag == JSONAny(1.0));
}

bool hasWords(const JSONAny* json) {
  const auto* text = json ? json->as<std::string>() : nullptr;
  return text && !text->empty();
}

bool hasSomethingToShow(const JSONAny* alert) {
  return hasWords(alert) || hasWords(presentAt(alert, "title")) || hasWords(presentAt(alert, "body")) ||
         presentAt(alert, "n");
}

}  // namespace

RemoteKind remoteKind(const JSONAny& payload) {
  const auto* aps = presentAt(&payload, "aps");
  if (isOne(presentAt(aps, "content-available")) && !hasSomethingToShow(presentAt(aps, "alert")))
    return RemoteKind::silent;
  return isOne(presentAt(aps, "mutable-content")) ? RemoteKind::changeable : RemoteKind::asItCame;
}

}  // namespace VorselKelp
