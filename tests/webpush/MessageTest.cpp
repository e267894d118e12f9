#include "VorselKelpWebPush/Message.h"

#include <gmock/gmock.h>

#include "VorselKelpWebPush/Request.h"
#include "message/SealedMessage.h"
#include "records/Record.h"
#include "webpush/Vectors.h"

namespace VorselKelp::webpush {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

constexpr std::size_t headSize = 86;

class MessageTest : public testing::Test {
 protected:
  /// For the receiver of the standard's example, from its sender.
  [[nodiscard]] std::string sealed(const std::string& content) const {
    const auto sender = CurveKey::ofScalar(example_.bytes("sender_private"));
    const auto message = sealMessage(content, subscription_, *sender, example_.bytes("salt"));
    EXPECT_TRUE(message.ok()) << whyNot(message);
    return message ? *message : "";
  }

  const Vector example_{"rfc8291_appendix_a"};
  const ReceiverKeys keys_{example_.bytes("receiver_private"), example_.bytes("receiver_public"),
                           example_.bytes("auth")};
  const Subscription subscription_{"https://push.example/1", keys_.auth, keys_.publicKey};
};

TEST_F(MessageTest, TheStandardsExamplesInBothDirections) {
  const auto text = example_.text("plaintext");
  EXPECT_EQ(sealed(text + '\2'), example_.bytes("body"));
  const auto opened = decrypt(example_.bytes("body"), keys_);
  EXPECT_EQ(opened ? *opened : whyNot(opened), text);

  const Vector one("rfc8188_one_record");
  const auto body = one.bytes("body");
  const auto salt = body.substr(0, saltSize), record = body.substr(saltSize + 5);
  EXPECT_EQ(*sealRecord(one.text("plaintext") + '\2', one.bytes("key"), salt), record);
  EXPECT_EQ(*openRecord(record, one.bytes("key"), salt), one.text("plaintext") + '\2');

  const Vector two("rfc8188_two_records");
  const auto first = openRecord(two.bytes("body").substr(saltSize + 5 + 2, 25), two.bytes("key"),
                                two.bytes("body").substr(0, saltSize));
  ASSERT_TRUE(first.ok()) << whyNot(first);
  EXPECT_EQ(*first, two.text("plaintext").substr(0, 7) + "\1\0"s);
}

TEST_F(MessageTest, WhatIsEncryptedIsReadAgainUpToTheLimit) {
  struct Case {
    std::size_t text, padding;
  };
  for (const auto& [size, padding] : {Case{0, 0}, {1, 0}, {41, 7}, {3993, 0}, {0, 3993}, {1000, 2993}}) {
    std::string text(size, 'x');
    if (size > 1) text[size - 1] = '\0';  // which is no padding
    const auto message = encrypt(text, subscription_, padding);
    ASSERT_TRUE(message.ok()) << whyNot(message);
    EXPECT_EQ(message->size(), headSize + size + 1 + padding + tagSize);
    EXPECT_NE(*message, *encrypt(text, subscription_, padding)) << "a salt and a key of its own";
    const auto read = decrypt(*message, keys_);
    ASSERT_TRUE(read.ok()) << whyNot(read);
    EXPECT_EQ(*read, text);
  }
  for (const auto& [size, padding] : {Case{3994, 0}, {3993, 1}, {1, std::string::npos}})
    EXPECT_THAT(whyNot(encrypt(std::string(size, 'x'), subscription_, padding)), HasSubstr("3993 at most"));
}

TEST_F(MessageTest, NewKeysReadWhatIsForThemAlone) {
  const auto keys = makeReceiverKeys();
  ASSERT_TRUE(keys.ok()) << whyNot(keys);
  const auto message = encrypt("Storm", {"https://push.example/2", keys->auth, keys->publicKey});
  ASSERT_TRUE(message.ok()) << whyNot(message);
  EXPECT_EQ(*decrypt(*message, *keys), "Storm");
  const auto with = [&](const auto& change) {
    auto changed = *keys;
    change(changed);
    return whyNot(decrypt(*message, changed));
  };
  const auto other = HasSubstr("for other keys");
  EXPECT_THAT(with([&](auto& k) { k.auth = keys_.auth; }), other);
  EXPECT_THAT(with([&](auto& k) { k.publicKey = keys_.publicKey; }), other);
  EXPECT_THAT(with([&](auto& k) { k.privateKey = keys_.privateKey; }), other);
  EXPECT_THAT(with([&](auto& k) { k.auth.pop_back(); }), HasSubstr("16 bytes"));
  EXPECT_THAT(with([&](auto& k) { k.publicKey.back() ^= 1; }), HasSubstr("no key on P-256"));
  EXPECT_THAT(with([&](auto& k) { k.privateKey.pop_back(); }), HasSubstr("32 bytes"));
  EXPECT_THAT(with([&](auto& k) { k.privateKey.assign(32, '\0'); }), HasSubstr("do not agree"));
  EXPECT_THAT(with([&](auto& k) { k.privateKey.assign(32, '\xff'); }), other);
}

TEST_F(MessageTest, SaysWhatIsWrongWithAMessage) {
  const auto whole = example_.bytes("body");
  const auto changed = [&](std::size_t at, const std::string& bytes) {
    return std::string(whole).replace(at, bytes.size(), bytes);
  };
  const auto flipped = [&](std::size_t at) { return changed(at, {static_cast<char>(whole[at] ^ 1)}); };
  struct Case {
    std::string message, words;
  };
  const std::vector<Case> cases{
      {"", "ends in its head"},
      {whole.substr(0, 20), "ends in its head"},
      {whole.substr(0, 85), "ends in its sender's key"},
      {whole.substr(0, headSize), "too short for text and tag"},
      {whole.substr(0, headSize + 16), "too short for text and tag"},
      {whole.substr(0, whole.size() - 1), "changed on its way"},
      {whole + std::string(4096, 'x'), "4240 bytes, 4096 at most"},
      {changed(20, "\0"s), "0 bytes, not of 65"},
      {changed(20, "\x42"), "66 bytes, not of 65"},
      {changed(21, "\2"), "an uncompressed point"},
      {changed(22, std::string(64, '\0')), "no point on P-256"},
      {changed(22, std::string(64, '\xff')), "no point on P-256"},
      {flipped(85), "no point on P-256"},
      {changed(16, "\0\0\0\0"s), "0 bytes, 18 at least"},
      {changed(16, "\0\0\0\x11"s), "17 bytes, 18 at least"},
      {changed(16, "\0\0\0\x12"s), "several records: each of 18 bytes"},
      {flipped(0), "changed on its way"},
      {flipped(headSize), "changed on its way"},
      {flipped(whole.size() - 1), "changed on its way"},
      {sealed("\0"s), "padding alone"},
      {sealed("Storm\1"), "announces another one"},
      {sealed("Storm\1\0\0"s), "announces another one"},
      {sealed("Storm"), "does not end with a delimiter"},
      {sealed("Storm\3\0"s), "does not end with a delimiter"},
  };
  for (const auto& [message, words] : cases) {
    const auto why = whyNot(decrypt(message, keys_));
    EXPECT_THAT(why, HasSubstr(words));
    EXPECT_EQ(why.find('\n'), std::string::npos);
  }
  EXPECT_TRUE(decrypt(changed(16, "\xff\xff\xff\xff"), keys_).ok());
  EXPECT_TRUE(decrypt(changed(16, "\0\0\0\x3a"s), keys_).ok()) << "as large as its record";
}

TEST_F(MessageTest, ARequestSaysWhatAPushServiceAsksFor) {
  const auto request =
      makeRequest("Storm", subscription_, {86400, "very-low", topicOf("weather"), "vapid t=1, k=2"});
  ASSERT_TRUE(request.ok()) << whyNot(request);
  EXPECT_EQ(request->method + " " + request->url, "POST https://push.example/1");
  using Headers = std::vector<platform::HTTPHeader>;
  const Headers expected{{"TTL", "86400"},
                         {"Content-Encoding", "aes128gcm"},
                         {"Content-Type", "application/octet-stream"},
                         {"Urgency", "very-low"},
                         {"Topic", "5ecr6048aSbT3J4-LveDO6UM2RnCRgp4"},
                         {"Authorization", "vapid t=1, k=2"}};
  EXPECT_EQ(request->headers, expected);
  EXPECT_EQ(*decrypt(request->body, keys_), "Storm");

  const auto bare = makeRequest("", subscription_, {.ttl = 86400});
  ASSERT_TRUE(bare.ok()) << whyNot(bare);
  EXPECT_EQ(bare->headers, Headers(expected.begin(), expected.begin() + 3));
  EXPECT_THAT(whyNot(makeRequest("", subscription_, {0, "urgent", "", ""})), HasSubstr("none of very-low"));
  for (const auto& topic : {std::string("a\r\nb"), std::string(33, 'a')})
    EXPECT_THAT(whyNot(makeRequest("", subscription_, {.topic = topic})), HasSubstr("The topic"));
  EXPECT_THAT(whyNot(makeRequest(std::string(3994, 'x'), subscription_, {})), HasSubstr("3993 at most"));
}

}  // namespace
}  // namespace VorselKelp::webpush
