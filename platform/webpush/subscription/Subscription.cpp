#include "VorselKelpWebPush/Subscription.h"

#include <array>
#include <optional>

#include "VorselKelp/JSONText.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Endpoint.h"
#include "crypto/CurveKey.h"

namespace VorselKelp::webpush {
namespace {

/// Of the text in clear: a whole one has 1,155 bytes at most.
constexpr std::size_t longestText = 4096;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

unsigned digitValue(char digit) {
  return static_cast<unsigned>(digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10);
}

bool isHexadecimal(std::string_view text) {
  return text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

/// Only of an even number of hexadecimal digits.
std::string fromHexadecimal(std::string_view digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(digitValue(digits[i]) << 4 | digitValue(digits[i + 1]));
  return bytes;
}

/// The bytes of the member "keys.NAME".
Result<std::string> keyMember(const JSONAny& json, const std::string& name, std::size_t size) {
  const auto* keys = json.find("keys");
  const auto* member = keys != nullptr ? keys->find(name) : nullptr;
  const auto* text = member != nullptr ? member->as<std::string>() : nullptr;
  if (text == nullptr) return Error{"The subscription has no text \"keys\".\"" + name + "\""};
  auto bytes = fromBase64Url(*text);
  if (!bytes) return Error{"The subscription's \"" + name + "\" " + bytes.error().description};
  if (bytes->size() != size) {
    return Error{"The subscription's \"" + name + "\" has " + std::to_string(bytes->size()) + " bytes, not " +
                 std::to_string(size)};
  }
  return bytes;
}

}  // namespace

std::string subscriptionText(const Subscription& subscription) {
  const JSONAny json(
      JSONAny::Dictionary{{"endpoint", subscription.endpoint},
                          {"expirationTime", JSONNull()},
                          {"keys", JSONAny::Dictionary{{"auth", toBase64Url(subscription.auth)},
                                                       {"p256dh", toBase64Url(subscription.p256dh)}}}});
  const auto text = json.encode();
  return text ? *text : std::string();
}

Result<Subscription> parseSubscription(std::string_view text) {
  text = trimmed(text);
  if (text.empty()) return Error{"The subscription is empty"};
  const bool digits = isHexadecimal(text);
  if (digits && text.size() % 2 != 0)
    return Error{"The subscription has an odd number of hexadecimal digits: one is missing"};
  if (text.size() > (digits ? 2 * longestText : longestText)) return Error{"The subscription is too long"};
  const auto json = readJSONText(digits ? fromHexadecimal(text) : text);
  if (!json) return Error{"The subscription is no JSON: " + json.error().description};
  const auto* member = json->find("endpoint");
  const auto* endpoint = member != nullptr ? member->as<std::string>() : nullptr;
  if (endpoint == nullptr) return Error{"The subscription has no text \"endpoint\""};
  if (const auto parsed = parseEndpoint(*endpoint); !parsed) return parsed.error();
  auto auth = keyMember(*json, "auth", 16);
  if (!auth) return auth.error();
  auto point = keyMember(*json, "p256dh", pointSize);
  if (!point) return point.error();
  if (const auto key = CurveKey::ofPoint(*point); !key)
    return Error{"The subscription's \"p256dh\": " + key.error().description};
  return Subscription{*endpoint, *std::move(auth), *std::move(point)};
}

}  // namespace VorselKelp::webpush
