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

}  // namespace

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
