#include "notifications/NotificationMessage.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace VorselKelp::freedesktop {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class NotificationMessageTest : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(folder); }
  void TearDown() override { std::filesystem::remove_all(folder); }

  std::string file(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
    return folder + "/" + name;
  }

  /// The message as text, which shows types and escapes.
  std::string text() const {
    const auto message = notifyArguments(application, content, category, abilities, 7);
    return TextPtr(g_variant_print(message.get(), FALSE)).get();
  }

  const std::string folder = testing::TempDir() + "vorsel-message-" + std::to_string(::getpid());
  BusNotificationOptions application{"News", "com.example.news", folder, ""};
  platform::NotificationContent content;
  platform::NotificationCategory category;
  ServerAbilities abilities{.actions = true, .bodyMarkup = true};
};

TEST_F(NotificationMessageTest, JoinsTheTextsAndEscapesWhatWouldBeMarkup) {
  content.title = "A <b>title</b>";
  content.subtitle = "Sub & title";
  content.body = "1 < 2";
  content.categoryIdentifier = "Vorsel categ/7";
  EXPECT_EQ(text(), R"(('News', 7, '', 'A <b>title</b>', 'Sub &amp; title\n1 &lt; 2', ['default', 'Open'], )"
                    R"({'urgency': <byte 0x01>, 'desktop-entry': <'com.example.news'>, )"
                    R"('category': <'x-vorselkelp.Vorsel_categ_7'>}, -1))");
  content.title.clear();
  content.body.clear();
  abilities = {.sound = true};
  EXPECT_THAT(text(), StartsWith("('News', 7, '', 'News', 'Sub & title', [], {"));
  EXPECT_THAT(text(), HasSubstr("'suppress-sound': <true>"));
  abilities = {.persistence = true};
  EXPECT_THAT(text(), HasSubstr("'resident': <true>"));
}

TEST_F(NotificationMessageTest, HostileTextsArriveCutAndValid) {
  content.title = std::string("nul\0 and \xff", 10);
  content.body = std::string(4095, '&') + "\xe2\x82\xac tail";  // the limit falls inside the last character
  category.actions.assign(1000, {"id", std::string(100'000, 'x')});
  const auto message = notifyArguments(application, content, category, abilities, 0);
  EXPECT_TRUE(g_variant_is_normal_form(message.get()));
  EXPECT_LT(g_variant_get_size(message.get()), 40'000u);
  EXPECT_THAT(text(), HasSubstr("'nul\uFFFD and \uFFFD'"));
  EXPECT_THAT(text(), HasSubstr("&amp;', ["));
  content.title = content.body = std::string(1 << 20, '\x80');
  EXPECT_TRUE(g_variant_is_normal_form(notifyArguments(application, content, category, abilities, 0).get()));
  EXPECT_EQ(actionOfKey(category, "button-7"), "id");
  for (const auto* unknown : {"button-8", "button-", "button--1", "button-07", ""})
    EXPECT_EQ(actionOfKey(category, unknown), std::nullopt) << unknown;
}

TEST_F(NotificationMessageTest, ShowsTheFirstAttachmentThatIsAnImage) {
  abilities.images = true;
  content.attachments = {{"a", folder + "/missing"},
                         {"b", folder},
                         {"c", file("empty.png", "")},
                         {"d", file("film.png", "\x1a\x45\xdf\xa3 no image")}};
  EXPECT_THAT(text(), Not(HasSubstr("image-path")));
  for (const std::string head :
       {"\x89PNG\r\n\x1a\n", "\xff\xd8\xff\xe0", "GIF89a", "RIFF\x10\x20\x30\x40WEBPVP8 "}) {
    auto shown = content;
    shown.attachments.push_back({"e", file("a picture", head)});
    std::swap(shown, content);
    EXPECT_THAT(text(), HasSubstr("'image-path': <'file://" + folder + "/a%20picture'>"));
    std::swap(shown, content);
  }
}

TEST_F(NotificationMessageTest, SendsAPictureToServersThatShowIt) {
  content.body = "Body";
  content.attachments = {{"a", file("a&b.png", "\x89PNG\r\n\x1a\n")}};
  const std::string beside = "'image-path': <'file://";
  const std::string within = "'Body<img src=\"file://" + folder + "/a&amp;b.png\" alt=\"\"/>'";
  const struct {
    ServerAbilities abilities;
    bool isBeside;
    bool isWithin;
  } servers[] = {{{.bodyMarkup = true}, false, false},
                 {{.bodyMarkup = true, .bodyImages = true}, false, true},
                 {{.bodyImages = true}, false, false},
                 {{.bodyMarkup = true, .bodyImages = true, .images = true}, true, false}};
  for (const auto& server : servers) {
    abilities = server.abilities;
    EXPECT_EQ(text().find(beside) != std::string::npos, server.isBeside) << text();
    EXPECT_EQ(text().find(within) != std::string::npos, server.isWithin) << text();
  }
}

TEST_F(NotificationMessageTest, KnowsWhatAServerCan) {
  const auto all = serverAbilities(
      hold(g_variant_new_parsed("(['body', 'actions', 'body-markup', 'body-images', 'icon-multi', "
                                "'persistence', 'sound', 'x-own', ''],)"))
          .get());
  EXPECT_TRUE(all.actions && all.bodyMarkup && all.bodyImages && all.images && all.persistence && all.sound);
  const auto none = serverAbilities(hold(g_variant_new_parsed("(@as [],)")).get());
  EXPECT_FALSE(none.actions || none.bodyMarkup || none.bodyImages || none.images || none.persistence ||
               none.sound);
}

TEST_F(NotificationMessageTest, PlaysTheApplicationsSoundOrTheDesktopsOwn) {
  abilities.sound = true;
  file("ping.oga", "sound");
  content.sound = platform::NotificationSound::named("ping.oga");
  EXPECT_THAT(text(), HasSubstr("'sound-file': <'" + folder + "/ping.oga'>"));
  for (const auto& other :
       {std::string("missing.oga"), "../" + folder.substr(folder.rfind('/') + 1) + "/ping.oga",
        std::string(".."), std::string()}) {
    content.sound = platform::NotificationSound::named(other);
    EXPECT_THAT(text(), HasSubstr("'sound-name': <'message-new-instant'>")) << other;
  }
  content.sound = platform::NotificationSound::defaultSound();
  EXPECT_THAT(text(), HasSubstr("'sound-name': <'message-new-instant'>"));
}

}  // namespace
}  // namespace VorselKelp::freedesktop
