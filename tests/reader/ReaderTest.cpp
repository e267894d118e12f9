// The Reader in a real window, with real notification daemons.

#include <gmock/gmock.h>

#include "reader/Desk.h"
#include "reader/ScreenReader.h"

namespace VorselKelp::testing_support {
namespace {

using platform::AuthorizationStatus;

/// A daemon, and where and how a pop-up in the upper right corner of the display is opened there.
struct Daemon {
  const char* name;
  const char* command;
  const char* tap;
  const char* opened;
};

class ReaderDaemonTest : public Desk, public testing::WithParamInterface<Daemon> {};

TEST_P(ReaderDaemonTest, ShowsWhatIsDueAndItsTapOpensTheArticle) {
  const Program daemon(GetParam().command);
  auto waiting = fittedOut("n-1");
  EXPECT_EQ(waiting.content.body, "Stay in");
  waiting.trigger = platform::TimeIntervalTrigger{2, false};
  ASSERT_TRUE(store_->schedule(waiting));
  startReader();
  ASSERT_TRUE(waitFor([&] { return !store_->delivered().empty(); }));
  EXPECT_GE(store_->clock()->now(), store_->delivered().front().due) << "not before its time";
  EXPECT_TRUE(waitFor([&] { return pixels(sun) > 20; })) << "the picture";

  ASSERT_TRUE(waitFor([&] {
    output(std::string("xdotool ") + GetParam().tap);
    return !window(GetParam().opened).empty();
  }));
  EXPECT_TRUE(waitFor([&] { return requests("/track/click") == 1; }));
  EXPECT_TRUE(waitFor([&] { return store_->delivered().empty(); })) << "what was opened is gone";
}

INSTANTIATE_TEST_SUITE_P(Daemons, ReaderDaemonTest,
                         testing::Values(Daemon{"xfce4", XFCE_NOTIFYD, "mousemove 728 92 click 1",
                                                "/articles/more"},  // its second button
                                         Daemon{"dunst", "dunst", "mousemove 630 78 click 2",
                                                "/articles/storm"}),
                         [](const auto& daemon) { return std::string(daemon.param.name); });

class ReaderTest : public Desk {};

TEST_F(ReaderTest, ShowsTheLibrarysScreensOverItsOwnWindow) {
  ::setenv("GTK_A11Y", "atspi", 1);
  const ScreenReader screenReader;
  store_->setAuthorization(AuthorizationStatus::notDetermined);
  startReader();
  ASSERT_TRUE(waitFor([&] { return std::ranges::count(screenReader.everything(), "button Allow") == 1; }));
  output("xdotool mousemove 240 300");
  ASSERT_TRUE(waitFor([&] {
    output("xdotool key Tab Return");  // "Don't Allow" has the keyboard first
    return store_->authorization() != AuthorizationStatus::notDetermined;
  }));
  EXPECT_EQ(store_->authorization(), AuthorizationStatus::authorized);
  EXPECT_TRUE(waitFor([&] { return store_->pending().size() == 1; })) << "the reminder";

  activate(reader, "interstitial");
  ASSERT_TRUE(waitFor([&] { return requests("/v1/display/feed-7") > 0; }));
  EXPECT_THAT(screenReader.everything(), testing::Contains("button Close"));
  EXPECT_THAT(written("lines"), testing::Not(testing::HasSubstr("CLOSE INTERSTITIAL AD")));
  ASSERT_TRUE(waitFor([&] {
    output("xdotool key Escape");
    return written("lines").find("CLOSE INTERSTITIAL AD") != std::string::npos;
  }));

  ASSERT_TRUE(store_->deliver(campaign("c-1")));
  activate(reader, "vorselkelp-response", R"([<("c-1", "vorselkelp-campaign")>])");
  ASSERT_TRUE(waitFor([&] { return !window("^Stories$").empty(); }));
  EXPECT_THAT(screenReader.everything(),
              testing::IsSupersetOf({"button Next", "button Previous", "button Open"}));
  EXPECT_TRUE(waitFor([&] { return pixels(sun) > 500; })) << "its picture";
  output("xdotool mousemove 291 211 click 1");  // the arrow in the picture
  ASSERT_TRUE(waitFor([&] { return requests("/track/seen1") > 0; }));
  output("xdotool key Tab Tab Return");
  ASSERT_TRUE(waitFor([&] { return requests("/track/seen2") > 0; }));
  EXPECT_EQ(requests("/track/click"), 0);
  EXPECT_THAT(written("lines"), testing::Not(testing::ContainsRegex("WARNING|CRITICAL")));
}

}  // namespace
}  // namespace VorselKelp::testing_support
