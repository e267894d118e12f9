// The Reader's life: its user is asked, starts it twice, closes it early, reads another language.

#include <gmock/gmock.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>

#include "collection_server/CollectionServer.h"
#include "reader/Desk.h"
#include "reader/ScreenReader.h"

namespace VorselKelp::testing_support {
namespace {

using platform::AuthorizationStatus;
using testing::HasSubstr;

class ReaderLifeTest : public Desk {
 protected:
  static std::string actions() {
    return output(
        "gdbus call --session --dest com.example.reader --object-path /com/example/reader --method "
        "org.gtk.Actions.List");
  }
};

TEST_F(ReaderLifeTest, AsksByThePublishersPageFirst) {
  constexpr unsigned long yesButton = 0x1b3a57;
  serve(collection_server::promptingConfiguration());
  store_->setAuthorization(AuthorizationStatus::notDetermined);
  startReader();
  ASSERT_TRUE(waitFor([&] { return pixels(yesButton) > 1000; }));
  EXPECT_EQ(requests("/v2/mobile.js"), 1);
  output("xdotool mousemove 344 582 click 1");
  ASSERT_TRUE(waitFor([&] { return written("lines").find("pns.ok") != std::string::npos; }));
  EXPECT_EQ(store_->authorization(), AuthorizationStatus::notDetermined) << "the page does not decide";
  ASSERT_TRUE(waitFor([&] {
    output("xdotool mousemove 310 375 click 1");
    return store_->authorization() == AuthorizationStatus::authorized;
  }));
}

/// A catalogue as gettext's tools make it.
std::string catalogue(const std::map<std::string, std::string>& texts) {
  constexpr std::uint32_t headSize = 28;
  const auto count = static_cast<std::uint32_t>(texts.size());
  std::vector<std::uint32_t> head{0x950412de, 0, count, headSize, headSize + 8 * count, 0, 0};
  std::string words;
  const auto add = [&](const std::string& word) {
    head.push_back(static_cast<std::uint32_t>(word.size()));
    head.push_back(static_cast<std::uint32_t>(headSize + 16 * count + words.size()));
    words += word + '\0';
  };
  for (const auto& [text, translation] : texts) add(text);
  for (const auto& [text, translation] : texts) add(translation);
  return std::string(reinterpret_cast<const char*>(head.data()), 4 * head.size()) + words;
}

TEST_F(ReaderLifeTest, NamesItsButtonsInTheUsersLanguage) {
  const auto folder = folder_ / "data/locale/de/LC_MESSAGES";
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "/vorselkelp.mo")
      << catalogue({{"Close", "Zu"}, {"Next", "Weiter"}, {"Previous", "Davor"}});
  for (const auto& [name, value] :
       {std::pair("LC_ALL", "C.UTF-8"), {"LANGUAGE", "de"}, {"GTK_A11Y", "atspi"}})
    ::setenv(name, value, 1);
  const ScreenReader screenReader;
  const auto reads = [&](const std::string& text) {
    return waitFor([&] { return std::ranges::count(screenReader.everything(), text) == 1; });
  };
  startReader();
  activate(reader, "interstitial");
  EXPECT_TRUE(reads("button Zu"));
  ASSERT_TRUE(store_->deliver(campaign("c-1")));
  activate(reader, "vorselkelp-response", R"([<("c-1", "vorselkelp-campaign")>])");
  EXPECT_TRUE(reads("button Weiter"));
  EXPECT_TRUE(reads("button Davor"));
}

TEST_F(ReaderLifeTest, ASecondStartOnlyWakesTheFirst) {
  startReader();
  const auto reports = requests("/v2/activity");
  const auto second = start(READER, "second");
  ASSERT_TRUE(waitFor([&] { return !second->running(); }));
  EXPECT_EQ(written("second"), "");
  EXPECT_EQ(requests("/tag/"), 1);
  EXPECT_EQ(requests("/v2/activity"), reports);
  EXPECT_TRUE(reader_->running());
}

TEST_F(ReaderLifeTest, LivesWithoutAWindowUntilItsRequestIsAnswered) {
  startReader();
  std::unique_lock busy(answers_);
  activate(reader, "interstitial");
  ASSERT_TRUE(waitFor([&] { return requests("/v1/display/feed-7") == 1; }));
  closeWindow("^Reader$");
  ASSERT_TRUE(waitFor([&] { return window("^Reader$").empty(); }));
  EXPECT_THAT(actions(), HasSubstr("vorselkelp-response")) << "it is leaving already";
  EXPECT_TRUE(reader_->running());
  busy.unlock();
  EXPECT_TRUE(waitFor([&] { return !reader_->running(); }));
}

}  // namespace
}  // namespace VorselKelp::testing_support
