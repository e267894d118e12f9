#include "VorselKelpWebPush/Envelope.h"

#include <gmock/gmock.h>

#include "webpush/Vectors.h"

namespace VorselKelp::webpush {
namespace {

using testing::HasSubstr;

TEST(EnvelopeTest, IsTakenOutOfAPayloadAsItWasPutIn) {
  const Envelope full{"a-1", "storm \"\\é", 1'800'000'000};
  EXPECT_EQ(*putInto(full, R"({"aps":{}})"),
            R"({"aps":{},"vorselGateway":{"id":"a-1","collapse-id":"storm \"\\é","expiration":1800000000}})");
  EXPECT_EQ(*putInto({}, "{}"), R"({"vorselGateway":{}})");
  const auto sneaky = *putInto({"inner", "", {}}, R"({"a":1})");
  for (const std::string payload :
       {"{}", " { \n} ", R"({"aps":{"alert":"é"}})", "\n{\"a\" : [1.0e0 , {}] ,\"a\":{\"b\":{}} \t}\r\n",
        R"({"a":",\"vorselGateway\":{}"})", R"({"x\"vorselGateway":{}})", sneaky.c_str()}) {
    for (const auto& envelope : {full, Envelope{"b", "", {}}, Envelope{"", R"(,"vorselGateway":{)", 0}}) {
      const auto wrapped = putInto(envelope, payload);
      ASSERT_TRUE(wrapped.ok()) << whyNot(wrapped);
      ASSERT_TRUE(JSONAny::decode(*wrapped).ok()) << *wrapped;
      const auto unwrapped = unwrap(*wrapped);
      ASSERT_TRUE(unwrapped.ok()) << whyNot(unwrapped);
      EXPECT_EQ(unwrapped->payload, payload);
      EXPECT_TRUE(unwrapped->envelope == envelope) << *wrapped;
    }
  }
}

TEST(EnvelopeTest, PayloadsWithoutOneStayAsTheyAre) {
  for (const std::string payload :
       {"", "}}", "no JSON", R"({"aps":{}})", R"("vorselGateway":{}})", R"({"vorselGateway":1})",
        R"({"a":{"vorselGateway":{"id":1}}})", R"({"a":{"b":1,"vorselGateway":{"id":1}},"c":{}})",
        R"({"vorselGateway":{"id":1},"c":{}})", R"({"x\"vorselGateway":{"id":1}})",
        R"({"a":"\"vorselGateway":{"id":1}})"}) {
    const auto unwrapped = unwrap(payload);
    ASSERT_TRUE(unwrapped.ok()) << payload << whyNot(unwrapped);
    EXPECT_EQ(unwrapped->payload, payload);
    EXPECT_EQ(unwrapped->envelope, Envelope());
  }
}

TEST(EnvelopeTest, SaysWhatIsWrong) {
  for (const std::string member : {R"("id":1)", R"("id":"a\u0000")", R"("collapse-id":null)",
                                   R"("expiration":"1")", R"("expiration":1.5)"}) {
    const auto why = whyNot(unwrap(R"({"aps":{},"vorselGateway":{)" + member + "}}"));
    EXPECT_THAT(why, HasSubstr(member.substr(0, member.find(':')) + " is none"));
  }
  EXPECT_EQ(unwrap(R"({"vorselGateway":{"later":[],"id":"a"}})")->envelope, (Envelope{"a", "", {}}));
  for (const char* payload : {"", "{", "[]", "1}"})
    EXPECT_THAT(whyNot(putInto({}, payload)), HasSubstr("no JSON object"));
  EXPECT_THAT(whyNot(putInto({"", std::string(65, 'x'), {}}, "{}")), HasSubstr("\"collapse-id\" is none"));
  EXPECT_FALSE(putInto({"\xff", "", {}}, "{}").ok());
}

}  // namespace
}  // namespace VorselKelp::webpush
