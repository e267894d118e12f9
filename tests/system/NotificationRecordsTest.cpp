#include "VorselKelpSystem/NotificationRecords.h"

#include <gtest/gtest.h>

namespace VorselKelp::system {
namespace {

TEST(NotificationRecords, ReadWhatAPhoneWouldShowOfARemoteNotification) {
  const auto original = [](const char* text) { return originalContent(*JSONAny::decode(text)); };
  const auto full = original(R"({"aps": {"alert": {"title": "T", "subtitle": "S", "body": "B"}, "badge": 4,
                                 "sound": {"name": "bell"}, "category": "c"}})");
  EXPECT_EQ(full.title, "T");
  EXPECT_EQ(full.subtitle, "S");
  EXPECT_EQ(full.body, "B");
  EXPECT_EQ(full.badge, 4);
  EXPECT_EQ(full.sound, platform::NotificationSound::named("bell"));
  EXPECT_EQ(full.categoryIdentifier, "c");
  const auto plain = original(R"({"aps": {"alert": "only text", "sound": "default"}})");
  EXPECT_EQ(plain.body, "only text");
  EXPECT_EQ(plain.sound, platform::NotificationSound::defaultSound());
  EXPECT_EQ(original(R"({"aps": {"alert": 3, "badge": "x"}})").badge, std::nullopt);
}

TEST(NotificationRecords, KeepOfATextWhatJSONCanHold) {
  EXPECT_EQ(lossyText("a\xc3\xa9\xff\xe2\x82z"), "a\xc3\xa9\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbdz");
  EXPECT_EQ(lossyText("\xed\xa0\x80"), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
  EXPECT_EQ(encodeLossy(JSONAny::List{"\xff", 1}), "[\"\xef\xbf\xbd\",1]");
}

}  // namespace
}  // namespace VorselKelp::system
