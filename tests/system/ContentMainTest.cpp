#include "VorselKelpSystem/ContentMain.h"

#include <gtest/gtest.h>

#include "VorselKelpSystem/ChildProcess.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

TEST(ContentMain, ShowsANotificationUntilItsWindowIsLeft) {
  using Texts = std::vector<std::string>;
  const testing_support::TemporaryFolder folder;
  platform::DeliveredNotification notification{{}, 12.5};
  notification.request.identifier = "n-1";
  notification.request.content.title = "Storm";
  notification.request.content.attachments = {{"image", "/a.png"}};
  notification.request.content.userInfo = platform::UserInfo::fromJSON(
      R"({"aps": {"alert": {"title": "Storm", "n": {"body": "B", "data": {"url": "x://y"}}}}})");
  const auto input = encodeLossy(encodeDelivered(notification));
  struct Case {
    Texts arguments;
    std::string input;
    int status;
    Texts lines;
  };
  const Texts shown{"open, 400 wide", "n-1/Storm//a.png at 12.5", "opened aps:", "closed"};
  const Texts renamed{"open, 400 wide", "n-2/Storm//a.png at 12.5", "opened aps:", "closed"};
  const Texts unseen{"closed", "The content extension has no controller to show"};
  const Texts wrong{"open, 400 wide", "closed", "The controller is no notification-content extension"};
  const std::vector<Case> cases{
      Case{Texts{"leaves"}, input, 0, shown},
      Case{Texts{"stays", "--time-limit", "0.05", "--id", "n-2"}, input, 0, renamed},
      Case{Texts{"none"}, input, 1, unseen},
      Case{Texts{"plain"}, input, 1, wrong},
      Case{Texts{"leaves"}, "[]", 1, Texts{"The notification is no JSON object"}},
      Case{Texts{"leaves", "--colour", "red"}, input, 2, Texts{"There is no option --colour"}},
  };
  for (const auto& [arguments, text, status, lines] : cases) {
    ChildCommand command;
    command.program = CONTENT_PROGRAM;
    command.arguments = arguments;
    command.arguments.insert(command.arguments.begin(), folder.path());
    command.input = text;
    command.channel = 3;
    const auto outcome = runChild(command);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(outcome->exitStatus, status) << arguments[0];
    EXPECT_EQ(outcome->errorLines, lines) << arguments[0];
  }
}

}  // namespace
}  // namespace VorselKelp::system
