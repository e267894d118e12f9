#include "VorselKelpWebPush/Subscription.h"

#include <gmock/gmock.h>

#include "VorselKelpWebPush/Endpoint.h"
#include "webpush/Vectors.h"

namespace VorselKelp::webpush {
namespace {

using testing::HasSubstr;

const std::string auth = "BTBZMqHH6r4Tts7J_aSIgg";
const std::string point =
    "BCVxsr7N_eNgVRqvHtD0zTZsEc6-VV-JvLexhqUzORcxaOzi6-AYWXvTBHm4bjyPjs7Vd8pZGH6SRpkNtoIAiw4";

std::string textOf(const std::string& endpoint) {
  return R"({"endpoint":")" + endpoint + R"(","expirationTime":null,"keys":{"auth":")" + auth +
         R"(","p256dh":")" + point + R"("}})";
}

std::string digitsOf(const std::string& bytes, const char* digits) {
  std::string text;
  for (const char c : bytes) text += {digits[static_cast<unsigned char>(c) >> 4], digits[c & 15]};
  return text;
}

TEST(SubscriptionTest, IsReadHoweverItIsHandedOn) {
  const Subscription expected{"https://push.example/a/b?c=d", *fromBase64Url(auth), *fromBase64Url(point)};
  const auto text = textOf("https://push.example/a/b?c=d");
  EXPECT_EQ(subscriptionText(expected), text);
  const auto browsers = R"({"endpoint":"https://push.example/a/b?c=d","expirationTime":1700000000000,"x":{},)"
                        R"("keys":{"p256dh":")" +
                        point + R"(","auth":")" + auth + "\"}}\n";
  for (const auto& form : {text, " \r\n" + text + "\n", browsers, digitsOf(text, "0123456789abcdef"),
                           digitsOf(text, "0123456789ABCDEF") + "\n"}) {
    const auto read = parseSubscription(form);
    ASSERT_TRUE(read.ok()) << form << whyNot(read);
    EXPECT_EQ(*read, expected);
  }
  // An address that needs escapes is none, but must not make JSON that means something else.
  EXPECT_THAT(subscriptionText({"a\"b", "", ""}), HasSubstr(R"("a\"b")"));
  EXPECT_EQ(subscriptionText({"\xff", "", ""}), "");
}

TEST(SubscriptionTest, SaysWhatIsWrongWithOne) {
  const auto text = textOf("https://push.example/1");
  const auto with = [&](const std::string& what, const std::string& other) {
    auto changed = text;
    return changed.replace(changed.find(what), what.size(), other);
  };
  struct Case {
    std::string text, words;
  };
  const std::vector<Case> cases{
      {" \n", "is empty"},
      {"7b7", "odd number"},
      {"7b7d", "no text \"endpoint\""},
      {"ffff", "no JSON"},
      {"push", "no JSON"},
      {"[]", "no text \"endpoint\""},
      {with("\"https://push.example/1\"", "1"), "no text \"endpoint\""},
      {with("https://push", "ftp://push"), "neither an https nor an http"},
      {textOf("https://push.example/" + std::string(980, 'x')), "more than 1000 bytes"},
      {text + std::string(5000, ' ') + "x", "too long"},
      {std::string(9000, '7'), "too long"},
      {with("{\"auth\"", "{\"other\""), "no text \"keys\".\"auth\""},
      {with("\"p256dh\":\"" + point + '"', "\"p256dh\":null"), "no text \"keys\".\"p256dh\""},
      {with(auth, "BTBZMqHH6r4Tts7J_aSIgg=="), "\"auth\" is no base64url"},
      {with(auth, "BTBZMqHH6r4Tts7J/aSIgg"), "\"auth\" is no base64url"},
      {with(auth, "BTBZMqHH6r4Tts7J_aSI"), "\"auth\" has 15 bytes, not 16"},
      {with(point, "BCVx"), "\"p256dh\" has 3 bytes, not 65"},
      {with("Aiw4", "Aiw5"), "\"p256dh\" is no base64url"},
      {with("Aiw4", "Aiww"), "no point on P-256"},
      {with("\"BCVx", "\"ACVx"), "an uncompressed point"},
  };
  for (const auto& [wrong, words] : cases) {
    const auto why = whyNot(parseSubscription(wrong));
    EXPECT_THAT(why, HasSubstr(words)) << wrong;
    EXPECT_EQ(why.find('\n'), std::string::npos);
  }
}

TEST(EndpointTest, KnowsTheOriginOfAnAddressAndThisMachine) {
  struct Case {
    const char* url;
    const char* origin = nullptr;  ///< null: the address is none
    bool loopback = false;
  };
  const std::vector<Case> cases{
      {"https://push.example", "https://push.example"},
      {"HTTPS://Push.Example:443/A?b=https://x@y#"},
      {"HTTPS://Push.Example:443/A?b=https://x@y", "https://push.example"},
      {"https://push.example:8443/a", "https://push.example:8443"},
      {"http://push.example:80", "http://push.example"},
      {"http://push.example:443", "http://push.example:443"},
      {"https://192.0.2.1/", "https://192.0.2.1"},
      {"https://[2001:db8::1]:8443/", "https://[2001:db8::1]:8443"},
      {"http://localhost:8080/x", "http://localhost:8080", true},
      {"http://127.0.0.1:8080", "http://127.0.0.1:8080", true},
      {"http://127.255.0.9", "http://127.255.0.9", true},
      {"http://[::1]:8080", "http://[::1]:8080", true},
      {"http://127.0.0.1.example", "http://127.0.0.1.example"},
      {"http://localhost.example", "http://localhost.example"},
      {"http://128.0.0.1", "http://128.0.0.1"},
      {"http://[::2]", "http://[::2]"},
      {"https://"},
      {"https:///a"},
      {"https://:80/"},
      {"https://push.example:/"},
      {"https://push.example:0"},
      {"https://push.example:65536"},
      {"https://push.example:1x"},
      {"https://[::1"},
      {"https://[::1]x"},
      {"https://user@push.example"},
      {"https://push.example/a b"},
      {"https://push.example/\n"},
      {"https://p\xc3\xbcsh.example/"},
      {"https://pu%73h.example/"},
      {"//push.example"},
      {""},
  };
  for (const auto& [url, origin, loopback] : cases) {
    const auto endpoint = parseEndpoint(url);
    ASSERT_EQ(endpoint.ok(), origin != nullptr) << url;
    if (!endpoint) continue;
    EXPECT_EQ(endpoint->origin, origin) << url;
    EXPECT_EQ(endpoint->loopback, loopback) << url;
    EXPECT_EQ(endpoint->secure, endpoint->origin.starts_with("https")) << url;
  }
}

TEST(Base64UrlTest, WritesAllBytesAndReadsOnlyWhatItWrites) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(*fromBase64Url(toBase64Url(bytes)), bytes);
    bytes += static_cast<char>(255 - i);
  }
  EXPECT_EQ(toBase64Url("\xfb\xff"), "-_8");
  EXPECT_EQ(toBase64Url(""), "");
  for (const char* wrong : {"A", "-_9", "-_8=", "+/8", "AAA\n", "AAAAA", " AAA"})
    EXPECT_FALSE(fromBase64Url(wrong).ok()) << wrong;
}

}  // namespace
}  // namespace VorselKelp::webpush
