// The schemas of payloads against what is read and what lint finds.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "VorselKelp/PayloadLint.h"
#include "lint/RandomPayload.h"
#include "push/PayloadDecoder.h"

namespace VorselKelp::lint_tests {
namespace {

namespace bj = boost::json;

bool isValid(const bj::value& value, const bj::object& schema);

bool hasType(const bj::value& value, std::string_view type) {
  if (type == "integer")
    return value.is_number() && value.to_number<double>() == std::trunc(value.to_number<double>());
  if (type == "boolean") return value.is_bool();
  if (type == "null") return value.is_null();
  return type == "string" ? value.is_string() : type == "array" ? value.is_array() : value.is_object();
}

bool isValidNumber(const bj::value& value, const bj::object& schema) {
  if (!schema.contains("minimum") || !value.is_number()) return true;
  if (value.is_uint64())
    return value.get_uint64() <= static_cast<std::uint64_t>(schema.at("maximum").get_int64());
  constexpr double limit = 9223372036854775808.0;
  return value.is_int64() || (value.get_double() >= -limit && value.get_double() < limit);
}

bool isValidObject(const bj::object& object, const bj::object& schema) {
  if (const auto* required = schema.if_contains("required")) {
    for (const auto& key : required->get_array()) {
      if (!object.contains(key.get_string())) return false;
    }
  }
  const auto* properties = schema.if_contains("properties");
  if (!properties) return true;
  return std::ranges::all_of(properties->get_object(), [&](const auto& property) {
    const auto* member = object.if_contains(property.key());
    return !member || isValid(*member, property.value().get_object());
  });
}

bool isValidList(const bj::array& list, const bj::object& schema) {
  if (const auto* least = schema.if_contains("minItems"))
    if (list.size() < static_cast<std::size_t>(least->get_int64())) return false;
  const auto* items = schema.if_contains("items");
  return !items ||
         std::ranges::all_of(list, [&](const auto& item) { return isValid(item, items->get_object()); });
}

/// As much of JSON Schema as the schemas of payloads have.
bool isValid(const bj::value& value, const bj::object& schema) {
  const auto holds = [&](const bj::value& inner) { return isValid(value, inner.get_object()); };
  if (const auto* type = schema.if_contains("type"); type && !hasType(value, type->get_string()))
    return false;
  if (const auto* any = schema.if_contains("anyOf"); any && std::ranges::none_of(any->get_array(), holds))
    return false;
  if (const auto* inner = schema.if_contains("not"); inner && holds(*inner)) return false;
  if (const auto* when = schema.if_contains("if"); when && holds(*when) && !holds(schema.at("then")))
    return false;
  if (schema.contains("minLength") && value.is_string() && value.get_string().empty()) return false;
  if (const auto* object = value.if_object()) return isValidObject(*object, schema);
  if (const auto* list = value.if_array()) return isValidList(*list, schema);
  return isValidNumber(value, schema);
}

/// What no schema can tell is whether a text forms a URL.
bool lacksSomething(const PayloadLint& lint) {
  return std::ranges::any_of(lint.stops, [](const auto& stop) {
    const auto has = [&](const char* words) { return stop.text.find(words) != std::string::npos; };
    return stop.when != PayloadLint::Stop::When::preparing &&
           (!has("forms no URL") || has("\"\" forms no URL"));
  });
}

TEST(LintSchema, AcceptsWhatIsReadAndLacksNothing) {
  const auto pushSchema = bj::parse(*payloadSchema("push"));
  const auto campaignSchema = bj::parse(*payloadSchema("campaign"));
  RandomPayload payloads(2);
  std::size_t pushes = 0, campaigns = 0;
  for (int i = 0; i < 3000; ++i) {
    const auto text = payloads.next();
    SCOPED_TRACE(text);
    const auto payload = Payload::open(platform::UserInfo::fromJSON(text));
    ASSERT_TRUE(payload);
    const auto lint = lintPayload(text, "n-1");
    if (lint.silent) continue;  // read as neither
    const bool isPush = payload->pushObj() && !lacksSomething(lint);
    const bool isCampaign = payload->campaign() && !lacksSomething(lint);
    ASSERT_EQ(isValid(bj::parse(text), pushSchema.get_object()), isPush);
    ASSERT_EQ(isValid(bj::parse(text), campaignSchema.get_object()), isCampaign);
    pushes += isPush;
    campaigns += isCampaign;
  }
  EXPECT_GT(pushes, 150u);
  EXPECT_GT(campaigns, 40u);
}

}  // namespace
}  // namespace VorselKelp::lint_tests
