#include "VorselKelpSystem/RemoteNotification.h"

#include "VorselKelpSystem/NotificationRecords.h"

namespace VorselKelp::system {
namespace {

const JSONAny* memberAt(const JSONAny* json, std::string_view key) {
  const auto* member = json != nullptr ? json->find(key) : nullptr;
  return member != nullptr && member->as<JSONNull>() == nullptr ? member : nullptr;
}

std::string wordsAt(const JSONAny* json, std::string_view key) {
  const auto* member = memberAt(json, key);
  const auto* text = member != nullptr ? member->as<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

bool isOne(const JSONAny* flag) {
  return flag != nullptr && (*flag == JSONAny(1) || *flag == JSONAny(1.0));
}

bool hasSomethingToShow(const JSONAny* alert) {
  if (alert == nullptr) return false;
  if (const auto* text = alert->as<std::string>()) return !text->empty();
  return !wordsAt(alert, "title").empty() || !wordsAt(alert, "body").empty() ||
         memberAt(alert, "n") != nullptr;
}

}  // namespace

RemoteKind kindOf(const JSONAny& payload) {
  const auto* aps = memberAt(&payload, "aps");
  if (isOne(memberAt(aps, "content-available")) && !hasSomethingToShow(memberAt(aps, "alert")))
    return RemoteKind::silent;
  return isOne(memberAt(aps, "mutable-content")) ? RemoteKind::changeable : RemoteKind::asItCame;
}

platform::NotificationContent unchangedContent(const JSONAny& payload) {
  auto content = originalContent(payload);
  if (!content.title.empty() || !content.body.empty()) return content;
  const auto* pages = memberAt(&payload, "p");
  const auto* list = pages != nullptr ? pages->as<JSONAny::List>() : nullptr;
  if (list == nullptr || list->empty()) return content;
  content.title = wordsAt(&list->front(), "t");
  content.body = wordsAt(memberAt(&list->front(), "o"), "body");
  return content;
}

}  // namespace VorselKelp::system
