#include "VorselKelp/ui/Label.h"
#include "VorselKelpTesting/MemoryScreen.h"
#include "gtk/support/ScreenTest.h"

namespace VorselKelp::gtk {
namespace {

class SheetTest : public ScreenTest {
 protected:
  SheetTest() {
    green_->backgroundColor = ui::Color{0, 0.5019607843, 0, 1};
    show(green_);
  }
  void waitForGreen() {
    waitUntil([&] { return pixel(200, 200) == "#008000"; });
  }

  std::shared_ptr<ui::View> green_ = std::make_shared<ui::View>();
};

TEST_F(SheetTest, ThePermissionQuestionTakesOneAnswer) {
  std::vector<std::optional<bool>> answers;
  const auto note = [&](std::optional<bool> allowed) { answers.push_back(allowed); };
  for (const bool allow : {true, false}) {
    const auto question = stage->askPermission("news", note);
    settle();
    click(width / 2 + (allow ? 70 : -70), height / 2 + 55);
    waitUntil([&] { return !answers.empty(); });
    question->tap(!allow);
    EXPECT_EQ(answers, std::vector{std::optional(allow)});
    answers.clear();
    waitForGreen();
  }
  stage->askPermission("news", note)->tap(true);
  EXPECT_EQ(answers, std::vector{std::optional(true)});
}

TEST_F(SheetTest, WhatIsOnTopHasKeyboardAndPointerAlone) {
  int below = 0;
  green_->addTapRecognizer([&] { ++below; });
  std::vector<std::optional<bool>> answers;
  const auto note = [&](std::optional<bool> allowed) { answers.push_back(allowed); };
  stage->askPermission("news", note);
  settle();
  click(20, 20);
  for (const char* key : {"Return", "space"}) {  // "Don't Allow" has the keyboard first
    press({"Tab", key});
    waitUntil([&] { return !answers.empty(); });
    EXPECT_EQ(answers, std::vector{std::optional(true)}) << key;
    answers.clear();
    stage->askPermission("news", note);
    settle();
  }
  press({"Escape"});
  waitUntil([&] { return !answers.empty(); });
  EXPECT_EQ(answers, std::vector{std::optional(false)});
  EXPECT_EQ(below, 0);
  click(20, 20);
  waitUntil([&] { return below == 1; });
  passFrames(3);  // the window gives the keyboard to what can have it
  press({"Return"});
  waitUntil([&] { return below == 2; });

  struct Screen final : ui::ViewController {
    bool accessibilityPerformEscape() override { return escaped = true; }
    bool escaped = false;
  };
  const auto screen = std::make_shared<Screen>();
  stage->presenter()->present(screen, stage->presenter()->rootViewController(), false);
  stage->makeBrowser(std::make_shared<testing_platform::RecordingWebViews>())
      ->present("http://127.0.0.1:59999/");
  settle();
  press({"Escape"});
  waitUntil([&] { return screens.size() == 3; });
  EXPECT_FALSE(screen->escaped);
  press({"Escape"});
  waitUntil([&] { return screen->escaped; });
}

TEST_F(SheetTest, TextsAreAsLargeAsTheUserWantsThem) {
  const auto label = std::make_shared<ui::Label>();
  label->translatesAutoresizingMaskIntoConstraints = false;
  label->text = "A headline";
  green_->addSubview(label);
  green_->activate({equal(label->leading(), green_->leading()), equal(label->top(), green_->top())});
  settle();
  const auto before = boundsOf(*label).size;
  auto* settings = gtk_widget_get_settings(GTK_WIDGET(window));
  int dpi = 0;
  g_object_get(settings, "gtk-xft-dpi", &dpi, nullptr);
  g_object_set(settings, "gtk-xft-dpi", 2 * dpi, nullptr);
  waitUntil([&] { return boundsOf(*label).size.height > 1.5 * before.height; });
  EXPECT_GT(boundsOf(*label).size.width, 1.5 * before.width);
  g_object_set(settings, "gtk-xft-dpi", dpi, nullptr);
}

TEST_F(SheetTest, TheQuestionLooksAsTheUsersThemeAndTextsDo) {
  auto* settings = gtk_widget_get_settings(GTK_WIDGET(window));
  int dpi = 0;
  g_object_get(settings, "gtk-xft-dpi", &dpi, nullptr);
  constexpr double middle = width / 2;
  constexpr double inSmallCard = height / 2 - 70;
  constexpr double inLargeCard = height / 2 - 90;
  const auto ask = [&](bool dark, double scale) {
    g_object_set(settings, "gtk-application-prefer-dark-theme", dark, "gtk-xft-dpi",
                 static_cast<int>(scale * dpi), nullptr);
    auto question = stage->askPermission("news", [](std::optional<bool>) {});
    settle();
    return question;
  };
  const std::string white = "#ffffff";
  const std::string dark = "#333333";
  auto question = ask(false, 1);
  EXPECT_EQ(pixel(middle, inSmallCard), white);
  EXPECT_NE(pixel(middle, inLargeCard), white);
  question->tap(true);
  question = ask(true, 1.3);
  EXPECT_EQ(pixel(middle, inSmallCard), dark);
  EXPECT_EQ(pixel(middle, inLargeCard), dark);
  question->tap(true);
  ask(false, 1)->tap(true);
}

TEST_F(SheetTest, TheBrowserClosesWithItsButton) {
  const auto browser = stage->makeBrowser(std::make_shared<testing_platform::RecordingWebViews>());
  browser->present("http://127.0.0.1:59999/first");
  browser->present("http://127.0.0.1:59999/second");  // in place of the first
  settle();
  EXPECT_EQ(pixel(200, 200), "#ffffff");
  click(25, 22);
  waitForGreen();
  EXPECT_EQ(screens, (std::vector{true, false, true, false}));
}

TEST_F(SheetTest, AWindowThatClosesTakesAlongWhatLiesOverIt) {
  struct Screen final : ui::ViewController {
    void viewWillDisappear(bool) override { ++leaving; }
    void viewDidDisappear(bool) override { ++left; }
    int leaving = 0;
    int left = 0;
  };
  const auto presenter = stage->presenter();
  const auto root = presenter->rootViewController();
  const auto lower = std::make_shared<Screen>();
  const auto upper = std::make_shared<Screen>();
  presenter->present(lower, root, false);
  presenter->present(upper, lower, false);
  stage->makeBrowser(std::make_shared<testing_platform::RecordingWebViews>())
      ->present("http://127.0.0.1:59999/");
  int unanswered = 0;
  const auto question =
      stage->askPermission("news", [&](std::optional<bool> allowed) { unanswered += !allowed; });
  const auto link = stage->screen()->makeDisplayLink([](double) {});
  link->setPaused(false);
  settle();
  closeWindow();
  waitUntil([&] { return lower->left == 1; });
  EXPECT_EQ(lower->leaving + upper->leaving + upper->left, 3);
  EXPECT_EQ(root->presentedViewController(), nullptr);
  EXPECT_EQ(unanswered, 1);
  question->tap(true);
  EXPECT_EQ(screens, (std::vector{true, true, true, false, false, false}));

  presenter->present(lower, root, false);
  EXPECT_EQ(lower->left, 1) << "without a window nothing is presented";
  EXPECT_EQ(stage->askPermission("news", [&](std::optional<bool> allowed) { unanswered += !allowed; }),
            nullptr);
  EXPECT_EQ(unanswered, 2);
  link->setPaused(true);
  link->setPaused(false);
}

TEST_F(SheetTest, ADisplayLinkTicksWithAWindowUntilItIsPaused) {
  std::vector<double> times;
  const auto link = stage->screen()->makeDisplayLink([&](double seconds) { times.push_back(seconds); });
  link->setPaused(false);
  waitUntil([&] { return times.size() >= 3; });
  EXPECT_LT(times.front(), times.back());
  link->setPaused(true);
  auto ticks = times.size();
  settle();
  EXPECT_EQ(times.size(), ticks);

  auto* other = GTK_WINDOW(gtk_window_new());  // where something plays too
  gtk_window_present(other);
  waitUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(other)) != FALSE; });
  link->setPaused(false);
  closeWindow();
  ticks = times.size();
  waitUntil([&] { return times.size() > ticks; });
  gtk_window_destroy(other);
}

}  // namespace
}  // namespace VorselKelp::gtk
