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

const JSONAny::List* pagesOf(const JSONAny* payload) {
  const auto* pages = memberAt(payload, "p");
  return pages != nullptr ? pages->as<JSONAny::List>() : nullptr;
}

}  // namespace

bool isCampaign(const platform::UserInfo& userInfo) {
  const auto json = userInfo.bytes() != nullptr
                        ? JSONAny::decode(*userInfo.bytes())
                        : Result<JSONAny>(JSONAny(JSONAny::Dictionary(*userInfo.dictionary())));
  const auto* pages = json ? pagesOf(&*json) : nullptr;
  return pages != nullptr && !pages->empty();
}

platform::NotificationContent unchangedContent(const JSONAny& payload) {
  auto content = originalContent(payload);
  if (!content.title.empty() || !content.body.empty()) return content;
  const auto* list = pagesOf(&payload);
  if (list == nullptr || list->empty()) return content;
  content.title = wordsAt(&list->front(), "t");
  content.body = wordsAt(memberAt(&list->front(), "o"), "body");
  return content;
}

}  // namespace VorselKelp::system
