#include "screen/PermissionSheet.h"

#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/ManualMainQueue.h"
#include "screen/FrameLink.h"
#include "screen/PageSheet.h"
#include "support/ScreenTest.h"

namespace VorselKelp::desktop {
namespace {

using SheetTest = ScreenTest;

TEST_F(SheetTest, ThePermissionDialogTakesOneAnswer) {
  for (const bool allow : {true, false}) {
    std::vector<bool> answers;
    const auto sheet =
        std::make_shared<PermissionSheet>("news", [&](bool allowed) { answers.push_back(allowed); });
    show(std::static_pointer_cast<ui::ViewController>(sheet));
    click(*sheet->button(allow));
    waitUntil([&] { return !answers.empty(); });
    sheet->button(!allow)->tap();
    EXPECT_EQ(answers, std::vector{allow});
  }
}

TEST_F(SheetTest, TheBrowserClosesWithItsButton) {
  const auto root = std::make_shared<ui::View>();
  root->backgroundColor = ui::Color{0, 0.5019607843, 0, 1};
  show(root);
  const auto clock = std::make_shared<testing_platform::ManualClock>();
  const auto queue = std::make_shared<testing_platform::ManualMainQueue>(clock);
  std::vector<bool> changes;
  PageSheetBrowser browser(window, queue, std::make_shared<Activity>([] {}), nullptr,
                           [&](bool appeared) { changes.push_back(appeared); });
  browser.present("http://127.0.0.1:59999/first");
  browser.present("http://127.0.0.1:59999/second");  // in place of the first
  settle();
  EXPECT_EQ(pixel(200, 200), "#ffffff");
  click(25, 22);
  waitUntil([&] { return pixel(200, 200) == "#008000"; });
  EXPECT_EQ(changes, (std::vector{true, false, true, false}));
}

TEST_F(SheetTest, ADisplayLinkTicksWithTheWindowUntilItIsPaused) {
  show(std::make_shared<ui::View>());
  DesktopDisplay display({}, window);
  std::vector<double> times;
  const auto link = display.makeDisplayLink([&](double seconds) { times.push_back(seconds); });
  link->setPaused(false);
  waitUntil([&] { return times.size() >= 3; });
  EXPECT_LT(times.front(), times.back());
  link->setPaused(true);
  const auto ticks = times.size();
  settle();
  EXPECT_EQ(times.size(), ticks);
}

}  // namespace
}  // namespace VorselKelp::desktop
