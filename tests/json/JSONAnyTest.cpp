#include "VorselKelp/JSONAny.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace VorselKelp {
namespace {

using namespace std::string_literals;

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JSONAny, TellsTheKindsApart) {
  EXPECT_EQ(*JSONAny::decode("true"), JSONAny(true));
  EXPECT_EQ(*JSONAny::decode("0"), JSONAny(0));
  EXPECT_EQ(*JSONAny::decode("0.0"), JSONAny(0.0));
  EXPECT_EQ(*JSONAny::decode("1e2"), JSONAny(100.0));
  EXPECT_EQ(*JSONAny::decode("\"\\u00e9\\ud83d\\ude00\""), JSONAny("\u00e9\U0001F600"));
  EXPECT_EQ(*JSONAny::decode("null"), JSONAny(JSONNull{}));
  EXPECT_EQ(*JSONAny::decode("[1,\"a\"]"), JSONAny(JSONAny::List{1, "a"}));
  EXPECT_EQ(*JSONAny::decode("{\"a\":{\"b\":null}}"),
            JSONAny(JSONAny::Dictionary{{"a", JSONAny::Dictionary{{"b", JSONNull{}}}}}));
  EXPECT_NE(JSONAny(1), JSONAny(1.0));
  EXPECT_NE(JSONAny(1), JSONAny(true));
}

TEST(JSONAny, NumbersAtAndBeyondSixtyFourBits) {
  EXPECT_EQ(*JSONAny::decode("9223372036854775807"), JSONAny(INT64_MAX));
  EXPECT_EQ(*JSONAny::decode("-9223372036854775808"), JSONAny(INT64_MIN));
  EXPECT_EQ(*JSONAny::decode("9223372036854775808"), JSONAny(9223372036854775808.0));
  EXPECT_EQ(*JSONAny::decode("123456789012345678901234567890"), JSONAny(123456789012345678901234567890.0));
}

TEST(JSONAny, DoublesReadBackToTheLastBit) {
  for (const double number : {102262.25655644241, 0.1, 5.409760742964738e+124, 1.3927926388013963e-143,
                              std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()})
    EXPECT_EQ(*JSONAny::decode(*JSONAny(number).encode()), JSONAny(number));
  EXPECT_EQ(*JSONAny::decode("1e-400"), JSONAny(0.0));
  for (const char* beyond : {"1e400", "-1e400", "1.8e308", "[123456789e305]"})
    EXPECT_FALSE(JSONAny::decode(beyond)) << beyond << " would be read as infinite, and could not be written";
}

TEST(JSONAny, KeepsKeyOrderAndTheLastOfTwoEqualKeys) {
  const auto any = JSONAny::decode("{\"z\":1,\"a\":2,\"z\":3}");
  ASSERT_TRUE(any);
  EXPECT_EQ(*any->encode(), "{\"z\":3,\"a\":2}");
  EXPECT_EQ(*any->find("a"), JSONAny(2));
  EXPECT_EQ(*any, *JSONAny::decode("\xEF\xBB\xBF{\"a\":2,\"z\":3}")) << "whatever the order, with a mark";
  EXPECT_NE(*any, *JSONAny::decode("{\"a\":2,\"z\":4}"));
  EXPECT_NE(*any, *JSONAny::decode("{\"a\":2}"));
  EXPECT_EQ(any->find("b"), nullptr);
  EXPECT_EQ(JSONAny(1).find("a"), nullptr);
}

TEST(JSONAny, RefusesWhatIsNoJSON) {
  const std::string texts[] = {
      "",    " ",        "{",        "[1,]",        "{\"a\":1} x",           "nul",   "'a'",
      "01",  "+1",       "\"\x01\"", "\"\xff\"",    "\"\\ud83d\"",           "{1:2}", "<html>",
      "\0"s, "\"a\0\""s, "[1] [2]",  nested(10000), std::string(10000, '{'), "NaN"};
  for (const auto& text : texts) {
    const auto any = JSONAny::decode(text);
    ASSERT_FALSE(any) << text.substr(0, 40);
    EXPECT_TRUE(any.error().description.starts_with("Cannot decode JSONAny")) << any.error().description;
  }
  EXPECT_TRUE(JSONAny::decode(nested(60)));
}

TEST(JSONAny, EncodesWhatItDecoded) {
  for (const char* text : {"null", "[true,false,0,-7,0.5,1.0,1e+300,\"a\"]",
                           "{\"a\":[],\"b\":{},\"\":\"\\\"\\\\\\n\\u0001/\"}", "\"\u00e9\U0001F600\""})
    EXPECT_EQ(*JSONAny::decode(text)->encode(), text);
  EXPECT_EQ(*JSONAny("\b\f\r\t\x1f\x7f").encode(), "\"\\b\\f\\r\\t\\u001f\x7f\"");
  EXPECT_EQ(*JSONAny("seven-7\x1f").encode(), "\"seven-7\\u001f\"") << "among eight bytes that are looked at";
  EXPECT_EQ(*JSONAny("a\0b"s).encode(), "\"a\\u0000b\"");
}

TEST(JSONAny, HasNoFormForSomeValues) {
  const JSONAny values[] = {std::nan(""),
                            HUGE_VAL,
                            -HUGE_VAL,
                            "\xff",
                            JSONAny::List{1, JSONAny::List{"\xc3"}},
                            JSONAny::Dictionary{{"\xff", 1}}};
  for (const auto& value : values) {
    const auto text = value.encode();
    ASSERT_FALSE(text);
    EXPECT_EQ(text.error().description, "Cannot encode JSONAny");
  }
}

TEST(JSONNull, DecodesNullAlone) {
  EXPECT_TRUE(JSONNull::decode(" null "));
  for (const char* other : {"0", "\"null\"", "[]", ""})
    EXPECT_EQ(JSONNull::decode(other).error().description, "Wrong type for JSONNull");
  EXPECT_EQ(JSONNull{}, JSONNull{});
  EXPECT_EQ(JSONNull{}.hashValue(), 0u);
  EXPECT_EQ(JSONNull{}.encode(), "null");
}

TEST(JSONCodingKey, IsATextAlone) {
  EXPECT_EQ(JSONCodingKey("1").key, "1");
  EXPECT_FALSE(JSONCodingKey::fromInteger(1));
  EXPECT_FALSE(JSONCodingKey("1").intValue());
}

}  // namespace
}  // namespace VorselKelp
