#include "VorselKelpSystem/ServiceMain.h"

#include <gtest/gtest.h>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

TEST(ServiceMain, DeliversWithoutASimulatedDevice) {
  const testing_support::TemporaryFolder folder;
  const auto loop = std::make_shared<posix::EventLoop>();
  ServiceProgram program;
  program.program = SERVICE_PROGRAM;
  program.arguments = {folder.path()};
  const auto delivery = makeDelivery(std::move(program), loop);
  platform::NotificationContent shown;
  ExtensionReport report;
  bool ended = false;
  const auto deliver = [&](const std::string& payload) {
    ended = false;
    delivery->deliver({"id", payload, ""},
                      {[&](Result<PushResult> result) { shown = result->request.content; },
                       [&](ExtensionReport given) {
                         report = std::move(given);
                         ended = true;
                       }});
    return loop->run([&] { return ended; }, posix::EventLoop::Clock::now() + std::chrono::seconds(60));
  };
  ASSERT_TRUE(deliver(R"({"aps": {"mutable-content": 1, "alert": {"title": "T", "n": {"body": "B",
                          "actions": [{"action": "a", "title": "A"}]}}}})"));
  EXPECT_EQ(shown.title, "T");
  EXPECT_EQ(shown.body, "B");
  EXPECT_TRUE(report.outcome.ended);
  EXPECT_EQ(report.outcome.errorLines, std::vector<std::string>{"printed by the extension"});
  // The buttons are in the store that the application reads.
  NotificationStore store(folder / "com.example.reader/vorselkelp/notifications", "com.example.reader",
                          posix::makeClock());
  ASSERT_EQ(store.actionsOf(shown.categoryIdentifier).size(), 1u);
  EXPECT_EQ(store.actionsOf(shown.categoryIdentifier)[0].title, "A");

  // Without a message of the library's it stops, and the original is shown.
  ASSERT_TRUE(deliver(R"({"aps": {"mutable-content": 1, "alert": "OP"}})"));
  EXPECT_EQ(shown.body, "OP");
  EXPECT_TRUE(report.outcome.stopReason.value_or("").starts_with("Fatal error: "));
}

TEST(ServiceMain, SaysWhatItDoesNotUnderstand) {
  const testing_support::TemporaryFolder folder;
  struct Case {
    std::vector<std::string> options;
    std::string input;
    int status;
  };
  for (const auto& [options, input, status] : std::vector<Case>{{{"--colour", "red"}, "{}", 2},
                                                                {{"--time-limit", "soon"}, "{}", 2},
                                                                {{"--time-limit"}, "{}", 2},
                                                                {{}, "[]", 1},
                                                                {{}, "{", 1}}) {
    ChildCommand command;
    command.program = SERVICE_PROGRAM;
    command.arguments = options;
    command.arguments.insert(command.arguments.begin(), folder.path());
    command.input = input;
    const auto outcome = runChild(command);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome->exitStatus, status) << input;
    EXPECT_EQ(outcome->errorLines.size(), 1u) << input;
  }
}

}  // namespace
}  // namespace VorselKelp::system
