#include "VorselKelpSystem/NotificationRecords.h"

#include <cmath>

namespace VorselKelp::system {
namespace {

using platform::NotificationContent;
using platform::NotificationSound;

std::string textAt(const JSONAny& json, std::string_view key) {
  const auto* value = json.find(key);
  const auto* text = value != nullptr ? value->as<std::string>() : nullptr;
  return text != nullptr ? *text : std::string();
}

std::optional<std::int64_t> integerAt(const JSONAny& json, std::string_view key) {
  const auto* value = json.find(key);
  const auto* number = value != nullptr ? value->as<std::int64_t>() : nullptr;
  if (number == nullptr) return std::nullopt;
  return *number;
}

/// Length of the well-formed UTF-8 character at the start of `bytes`; 0 when there is none.
std::size_t characterLength(std::string_view bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const auto first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || bytes.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
  }
  // Overlong forms, surrogates and what lies beyond the last plane.
  const auto second = byte(1);
  if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
      (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f)) {
    return 0;
  }
  return length;
}

JSONAny lossy(const JSONAny& value) {
  if (const auto* text = value.as<std::string>()) return lossyText(*text);
  if (const auto* number = value.as<double>()) return std::isfinite(*number) ? value : JSONAny();
  if (const auto* list = value.as<JSONAny::List>()) {
    JSONAny::List copy;
    for (const auto& element : *list) copy.push_back(lossy(element));
    return copy;
  }
  if (const auto* members = value.as<JSONAny::Dictionary>()) {
    JSONAny::Dictionary copy;
    for (const auto& [key, member] : *members) copy.push_back({lossyText(key), lossy(member)});
    return copy;
  }
  return value;
}

std::optional<NotificationSound> soundNamed(const std::string& name) {
  if (name.empty()) return std::nullopt;
  return name == "default" ? NotificationSound::defaultSound() : NotificationSound::named(name);
}

}  // namespace

std::string lossyText(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto length = characterLength(bytes);
    text += length > 0 ? bytes.substr(0, length) : std::string_view("\xef\xbf\xbd");
    bytes.remove_prefix(length > 0 ? length : 1);
  }
  return text;
}

std::string encodeLossy(const JSONAny& value) {
  auto text = value.encode();
  if (!text) text = lossy(value).encode();
  return text ? *text : "null";
}

JSONAny encodeActions(const std::vector<platform::NotificationAction>& actions) {
  JSONAny::List list;
  for (const auto& action : actions) {
    const bool destructive = action.option == platform::NotificationActionOption::destructive;
    list.push_back(JSONAny::Dictionary{{"identifier", action.identifier},
                                       {"title", action.title},
                                       {"option", destructive ? "destructive" : "foreground"}});
  }
  return list;
}

JSONAny encodeContent(const NotificationContent& content) {
  JSONAny::List attachments;
  for (const auto& file : content.attachments) {
    attachments.push_back(JSONAny::Dictionary{{"identifier", file.identifier}, {"path", file.path}});
  }
  JSONAny::Dictionary json{{"title", content.title}, {"subtitle", content.subtitle}, {"body", content.body}};
  if (content.badge) json.push_back({"badge", *content.badge});
  if (content.sound)
    json.push_back({"sound", content.sound->name ? JSONAny(*content.sound->name) : JSONAny(true)});
  json.push_back({"category", content.categoryIdentifier});
  json.push_back({"attachments", std::move(attachments)});
  return json;
}

NotificationContent decodeContent(const JSONAny& json) {
  NotificationContent content;
  content.title = textAt(json, "title");
  content.subtitle = textAt(json, "subtitle");
  content.body = textAt(json, "body");
  content.badge = integerAt(json, "badge");
  if (const auto* sound = json.find("sound")) {
    content.sound = NotificationSound::defaultSound();
    if (const auto* name = sound->as<std::string>()) content.sound->name = *name;
  }
  content.categoryIdentifier = textAt(json, "category");
  if (const auto* value = json.find("attachments")) {
    if (const auto* list = value->as<JSONAny::List>()) {
      for (const auto& file : *list)
        content.attachments.push_back({textAt(file, "identifier"), textAt(file, "path")});
    }
  }
  return content;
}

JSONAny encodeDelivered(const platform::DeliveredNotification& notification) {
  auto json = encodeContent(notification.request.content);
  auto& members = std::get<JSONAny::Dictionary>(json.value);
  members.push_back({"identifier", notification.request.identifier});
  members.push_back({"date", notification.date});
  const auto& info = notification.request.content.userInfo;
  if (const auto* dictionary = info.dictionary()) {
    members.push_back({"userInfo", *dictionary});
  } else if (auto decoded = JSONAny::decode(*info.bytes())) {
    members.push_back({"userInfo", *std::move(decoded)});
  }
  return json;
}

platform::DeliveredNotification decodeDelivered(const JSONAny& json) {
  platform::DeliveredNotification notification;
  notification.request.identifier = textAt(json, "identifier");
  notification.request.content = decodeContent(json);
  if (const auto* date = json.find("date")) {
    if (const auto* seconds = date->as<double>()) notification.date = *seconds;
    if (const auto* seconds = date->as<std::int64_t>()) notification.date = static_cast<double>(*seconds);
  }
  if (const auto* info = json.find("userInfo")) {
    if (const auto* dictionary = info->as<JSONAny::Dictionary>())
      notification.request.content.userInfo = platform::UserInfo(*dictionary);
  }
  return notification;
}

std::string authorizationWord(platform::AuthorizationStatus status) {
  switch (status) {
    case platform::AuthorizationStatus::notDetermined:
      return "notDetermined";
    case platform::AuthorizationStatus::denied:
      return "denied";
    case platform::AuthorizationStatus::authorized:
      return "authorized";
    case platform::AuthorizationStatus::provisional:
      return "provisional";
    case platform::AuthorizationStatus::ephemeral:
      return "ephemeral";
  }
  return std::to_string(static_cast<int>(status));
}

NotificationContent originalContent(const JSONAny& payload) {
  NotificationContent content;
  const auto* aps = payload.find("aps");
  if (aps == nullptr) return content;
  if (const auto* alert = aps->find("alert")) {
    if (const auto* body = alert->as<std::string>()) {
      content.body = *body;
    } else {
      content.title = textAt(*alert, "title");
      content.subtitle = textAt(*alert, "subtitle");
      content.body = textAt(*alert, "body");
    }
  }
  content.badge = integerAt(*aps, "badge");
  if (const auto* sound = aps->find("sound")) {
    const auto* name = sound->as<std::string>();
    content.sound = soundNamed(name != nullptr ? *name : textAt(*sound, "name"));
  }
  content.categoryIdentifier = textAt(*aps, "category");
  return content;
}

}  // namespace VorselKelp::system
