#include "gateway/provider/Fields.h"

#include <sys/random.h>

#include <array>
#include <charconv>
#include <set>
#include <string_view>
#include <utility>

#include "VorselKelpPosix/Hex.h"

namespace gateway {
namespace {

constexpr std::size_t longestTopic = 255;    // bytes
constexpr std::size_t longestCollapse = 64;  // bytes
constexpr std::size_t uuidLength = 36;

struct Kind {
  std::string_view name;
  PushType type;
  std::string_view suffix;  ///< that its topics have behind the application's identifier
};

constexpr std::array kinds{
    Kind{"alert", PushType::alert, ""},
    Kind{"background", PushType::background, ""},
    Kind{"voip", PushType::voip, ".voip"},
    Kind{"complication", PushType::other, ".complication"},
    Kind{"fileprovider", PushType::other, ".pushkit.fileprovider"},
    Kind{"location", PushType::other, ".location-query"},
    Kind{"liveactivity", PushType::other, ".push-type.liveactivity"},
    Kind{"pushtotalk", PushType::other, ".voip-ptt"},
    Kind{"mdm", PushType::other, ""},
};

using Reading = std::optional<Answer>;

Answer wrong(std::string_view reason) {
  return {400, reason};
}

bool isUuid(std::string_view text) {
  if (text.size() != uuidLength) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    if (dash ? c != '-' : !digit) return false;
  }
  return true;
}

std::string lowered(std::string text) {
  for (auto& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool isApplication(std::string_view text) {
  if (text.empty() || text.size() > longestTopic) return false;
  for (const char c : text) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (!letter && c != '.' && c != '-' && c != '_') return false;
  }
  return true;
}

bool hasDuplicates(const Request& request) {
  std::set<std::string_view> names;
  for (const auto& field : request.fields) {
    if (!names.insert(field.name).second) return true;
  }
  return false;
}

Reading readIdentifier(const Request& request, Notification& notification) {
  const auto* text = request.find("apns-id");
  if (!text) {
    notification.identifier = makeIdentifier();
    return {};
  }
  if (!isUuid(*text)) return wrong("BadMessageId");
  notification.identifier = lowered(*text);
  return {};
}

Reading readExpiration(const Request& request, Notification& notification) {
  const auto* text = request.find("apns-expiration");
  if (!text) return {};
  std::int64_t seconds = 0;
  const auto* end = text->data() + text->size();
  const auto [stopped, error] = std::from_chars(text->data(), end, seconds);
  if (error != std::errc() || stopped != end || seconds < 0) return wrong("BadExpirationDate");
  notification.expiration = seconds;
  return {};
}

Reading readPriority(const Request& request, Notification& notification) {
  const auto* text = request.find("apns-priority");
  const bool background = notification.type == PushType::background;
  notification.priority = background ? 5 : 10;
  if (!text) return {};
  if (*text == "10") {
    if (background) return wrong("BadPriority");
    notification.priority = 10;
  } else if (*text == "5") {
    notification.priority = 5;
  } else if (*text == "1") {
    notification.priority = 1;
  } else {
    return wrong("BadPriority");
  }
  return {};
}

/// The type decides what the topic ends with.
Reading readTypeAndTopic(const Request& request, Notification& notification) {
  const auto* topic = request.find("apns-topic");
  if (!topic) return wrong("MissingTopic");
  const auto* name = request.find("apns-push-type");
  const auto* kind = name ? std::ranges::find(kinds, *name, &Kind::name) : kinds.data();
  if (kind == kinds.data() + kinds.size()) return wrong("InvalidPushType");
  notification.type = kind->type;
  std::string_view application = *topic;
  if (application.ends_with(kind->suffix)) application.remove_suffix(kind->suffix.size());
  if (!isApplication(application)) return wrong("BadTopic");
  notification.topic = application;
  return {};
}

Reading readCollapse(const Request& request, Notification& notification) {
  const auto* text = request.find("apns-collapse-id");
  if (!text) return {};
  if (text->size() > longestCollapse) return wrong("BadCollapseId");
  notification.collapse = *text;
  return {};
}

}  // namespace

std::string makeIdentifier() {
  std::string bytes(16, '\0');
  if (::getrandom(bytes.data(), bytes.size(), 0) < 0) bytes.assign(bytes.size(), '0');
  bytes[6] = static_cast<char>((bytes[6] & 0x0f) | 0x40);
  bytes[8] = static_cast<char>((bytes[8] & 0x3f) | 0x80);
  auto text = VorselKelp::posix::hexOf(bytes);
  for (const std::size_t dash : {8, 13, 18, 23}) text.insert(dash, 1, '-');
  return text;
}

std::string identifierOf(const Request& request) {
  const auto* text = request.find("apns-id");
  return text && isUuid(*text) ? *text : std::string();
}

std::optional<Answer> readFields(const Request& request, Notification& notification) {
  if (hasDuplicates(request)) return wrong("DuplicateHeaders");
  for (const auto read : {readIdentifier, readTypeAndTopic, readExpiration, readPriority, readCollapse}) {
    if (auto answer = read(request, notification)) return answer;
  }
  return {};
}

}  // namespace gateway
