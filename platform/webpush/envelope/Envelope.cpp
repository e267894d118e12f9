#include "VorselKelpWebPush/Envelope.h"

#include <algorithm>

#include "VorselKelp/JSONAny.h"

namespace VorselKelp::webpush {
namespace {

constexpr std::string_view whiteSpace = " \t\r\n";
constexpr std::string_view opening = R"("vorselGateway":{)";
constexpr std::string_view envelopeKey = R"("vorselGateway":)";
constexpr std::size_t longestMember = 64;

std::string_view withoutBlanksBehind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

/// Whether this is the beginning of an object that has no member yet.
bool isBare(std::string_view text) {
  const auto brace = text.find_first_not_of(whiteSpace);
  return brace != std::string_view::npos && text[brace] == '{' &&
         text.find_first_not_of(whiteSpace, brace + 1) == std::string_view::npos;
}

bool isShortAndPlain(const std::string& text) {
  return text.size() <= longestMember &&
         std::ranges::none_of(text, [](unsigned char c) { return c < ' ' || c == 0x7f; });
}

Error isNone(const char* member) {
  return Error{std::string("The envelope's \"") + member + "\" is none"};
}

Status readText(const JSONAny& json, const char* member, std::string& text) {
  const auto* value = json.find(member);
  if (value == nullptr) return Done{};
  const auto* read = value->as<std::string>();
  if (read == nullptr || !isShortAndPlain(*read)) return isNone(member);
  text = *read;
  return Done{};
}

/// Members that are not known are those of a later gateway.
Result<Envelope> read(const JSONAny& json) {
  Envelope envelope;
  if (const auto status = readText(json, "id", envelope.identifier); !status) return status.error();
  if (const auto status = readText(json, "collapse-id", envelope.collapse); !status) return status.error();
  if (const auto* value = json.find("expiration")) {
    const auto* seconds = value->as<std::int64_t>();
    if (seconds == nullptr) return isNone("expiration");
    envelope.expiration = *seconds;
  }
  return envelope;
}

}  // namespace

Result<std::string> putInto(const Envelope& envelope, std::string_view payload) {
  const auto object = withoutBlanksBehind(payload);
  const auto first = object.find_first_not_of(whiteSpace);
  if (first == std::string_view::npos || object[first] != '{' || object.back() != '}' ||
      first + 1 == object.size())
    return Error{"The payload is no JSON object"};
  JSONAny::Dictionary members;
  for (const auto& [name, text] :
       {std::pair{"id", envelope.identifier}, std::pair{"collapse-id", envelope.collapse}}) {
    if (!isShortAndPlain(text)) return isNone(name);
    if (!text.empty()) members.push_back({name, text});
  }
  if (envelope.expiration) members.push_back({"expiration", *envelope.expiration});
  const auto json = JSONAny(std::move(members)).encode();
  if (!json) return json.error();
  const auto end = object.size() - 1;
  const bool bare = isBare(object.substr(0, end));
  std::string text(payload);
  return text.insert(end, (bare ? "" : ",") + std::string(envelopeKey) + *json);
}

Result<Unwrapped> unwrap(std::string_view payload) {
  const Unwrapped without{std::string(payload), {}};
  const auto object = withoutBlanksBehind(payload);
  auto begin = object.rfind(opening);
  // A key's first quotation mark is behind a comma or a brace, never within a text.
  if (begin == std::string_view::npos || begin == 0 || !object.ends_with("}}")) return without;
  const auto value = begin + envelopeKey.size();
  const auto json = JSONAny::decode(object.substr(value, object.size() - 1 - value));
  if (!json || json->as<JSONAny::Dictionary>() == nullptr) return without;  // an inner object's member
  if (object[begin - 1] == ',') {
    --begin;
  } else if (!isBare(object.substr(0, begin))) {
    return without;
  }
  auto envelope = read(*json);
  if (!envelope) return envelope.error();
  return Unwrapped{without.payload.substr(0, begin) + without.payload.substr(object.size() - 1),
                   *std::move(envelope)};
}

}  // namespace VorselKelp::webpush
