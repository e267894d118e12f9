#include "json/Decoder.h"

#include <cmath>

namespace VorselKelp::json {
namespace {

std::string pathText(const Place& place) {
  std::string path = place.parent ? pathText(*place.parent) : std::string();
  if (!place.parent) return path;
  if (place.key.empty()) return path + '[' + std::to_string(place.index) + ']';
  if (!path.empty()) path += '.';
  return path.append(place.key);
}

std::string_view kindText(const boost::json::value& value) {
  switch (value.kind()) {
    case boost::json::kind::null:
      return "null";
    case boost::json::kind::bool_:
      return "boolean";
    case boost::json::kind::string:
      return "text";
    case boost::json::kind::array:
      return "list";
    case boost::json::kind::object:
      return "object";
    default:
      return "number";
  }
}

}  // namespace

bool Failure::expected(std::string_view wanted, const boost::json::value& found, const Place& place) {
  text_ = pathText(place);
  if (!text_.empty()) text_ += ": ";
  text_.append("expected ").append(wanted).append(", found ").append(kindText(found));
  return false;
}

bool Failure::missing(std::string_view key, const Place& place) {
  text_ = pathText({&place, key, 0}) + ": missing";
  return false;
}

bool decodeValue(const boost::json::value& json, bool& out, const Place& place, Failure& failure) {
  if (!json.is_bool()) return failure.expected("boolean", json, place);
  out = json.get_bool();
  return true;
}

bool decodeValue(const boost::json::value& json, std::int64_t& out, const Place& place, Failure& failure) {
  if (json.is_int64()) return out = json.get_int64(), true;
  // A fraction of zero makes no other number.
  constexpr double limit = 9223372036854775808.0;  // 2^63, the first value that does not fit
  const double number = json.is_double() ? json.get_double() : limit;
  if (number < -limit || number >= limit || number != std::trunc(number))
    return failure.expected("64-bit integer", json, place);
  out = static_cast<std::int64_t>(number);
  return true;
}

bool decodeValue(const boost::json::value& json, std::string& out, const Place& place, Failure& failure) {
  const auto* text = json.if_string();
  if (!text) return failure.expected("text", json, place);
  out.assign(text->data(), text->size());
  return true;
}

}  // namespace VorselKelp::json
