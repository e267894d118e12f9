#include <fcntl.h>

#include <cstdlib>

#include "freedesktop/NotificationServer.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::freedesktop {
namespace {

/// The command line, its processes, and a desktop whose user taps what is shown.
class NotifyCommandTest : public BusTest {
 protected:
  NotifyCommandTest() {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // the toolkit keeps its fonts and themes to the end
    std::ofstream(folder_ / "news.json")
        << R"({"bundleIdentifier": "com.example.news", "apiKey": "k", "appGroupId": "group.news",
               "switches": {"push": true}, "endpoints": {"collection": "http://127.0.0.1:9",
               "tag": "http://127.0.0.1:9", "events": "http://127.0.0.1:9"}})";
    std::ofstream(folder_ / "push.json")
        << R"({"aps": {"mutable-content": 1, "alert": {"title": "Storm", "n": {"body": "Tonight",
               "actions": [{"action": "more", "title": "More", "url": "news://more"}],
               "data": {"url": "news://storm"}}}}})";
  }
  ~NotifyCommandTest() override {
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::unsetenv("ASAN_OPTIONS");
  }

  std::unique_ptr<tool_tests::ToolRun> start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), BRELLIXCTL);
    arguments.insert(arguments.end(),
                     {"--home", folder_ / "device", "--app", folder_ / "news.json", "--json"});
    return std::make_unique<tool_tests::ToolRun>(arguments, folder_ / "errors");
  }

  /// The application has run once, without a server that would let it initialise the library, and a push has
  /// come since.
  void deliver() {
    EXPECT_EQ(finish({"launch", "--answer", "allow"}), 1);
    EXPECT_EQ(finish({"push", folder_ / "push.json", "--id", "n"}), 0);
  }
  int finish(std::vector<std::string> arguments) {
    const auto run = start(std::move(arguments));
    (void)run->readAll();
    return run->wait();
  }

  testing_support::TemporaryFolder folder_;
};

TEST_F(NotifyCommandTest, ATapOnTheDesktopReachesTheApplication) {
  NotificationServer desktop(address);
  deliver();
  auto notify = start({"notify", "n"});
  waitUntil([&] { return !desktop.shown.empty(); });
  EXPECT_EQ(desktop.shown[0].title, "Storm");
  EXPECT_EQ(desktop.shown[0].body, "Tonight");
  ASSERT_GE(desktop.shown[0].actions.size(), 4u);
  desktop.invoke(desktop.shown[0].number, desktop.shown[0].actions[2]);
  waitUntil([&] { return !desktop.closed.empty(); });
  const auto outcome = JSONAny::decode(notify->readAll());
  EXPECT_EQ(notify->wait(), 0);
  ASSERT_TRUE(outcome.ok());
  EXPECT_EQ(tool_tests::at(*outcome, "deepLink"), "news://more");
}

TEST_F(NotifyCommandTest, ADesktopThatShowsNothingIsAnError) {
  deliver();
  auto notify = start({"notify", "n"});
  (void)notify->readAll();
  EXPECT_EQ(notify->wait(), 1);
}

}  // namespace
}  // namespace VorselKelp::freedesktop
