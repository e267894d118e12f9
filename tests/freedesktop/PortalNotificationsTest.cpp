#include "VorselKelpFreedesktop/PortalNotifications.h"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "freedesktop/NotificationServer.h"
#include "freedesktop/PortalServer.h"
#include "notifications/PortalMessage.h"
#include "posix/support/PictureFiles.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::freedesktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class PortalNotificationsTest : public BusTest {
 protected:
  void open(bool sandboxed = true) {
    notifications = makeNotifications(
        {"News", "com.example.news", "", address}, queue,
        [this](const BusNotificationResponse& response) {
          heard.push_back(response.request.identifier + ":" + response.request.content.title + ":" +
                          response.actionIdentifier + response.activationToken);
        },
        [this](const std::string& identifier, CloseReason reason) {
          gone.push_back(identifier + std::to_string(static_cast<int>(reason)));
        },
        sandboxed);
  }
  void show(const std::string& identifier, const std::string& title, const std::string& picture = {}) {
    platform::NotificationRequest request;
    request.identifier = identifier;
    request.content.title = title;
    if (!picture.empty()) request.content.attachments = {{"p", picture}};
    notifications->show(std::move(request), {}, [this, title](const Status& status) {
      answers.push_back(status ? title : title + ": " + status.error().description);
    });
  }
  void showAndWait(const std::string& identifier, const std::string& title, const std::string& picture = {}) {
    const auto before = answers.size();
    show(identifier, title, picture);
    waitUntil([&] { return answers.size() > before; });
  }
  std::string file(const std::string& called, const std::string& bytes) {
    std::ofstream(folder / called, std::ios::binary) << bytes;
    return folder / called;
  }

  testing_support::TemporaryFolder folder;
  std::shared_ptr<BusNotifications> notifications;
  std::vector<std::string> answers;
  std::vector<std::string> heard;
  std::vector<std::string> gone;
};

TEST_F(PortalNotificationsTest, AMessageHasNothingThatItsPortalDoesNotKnow) {
  platform::NotificationRequest request;
  request.identifier = "a/\xff";
  request.content.title = "A <b>title</b>";
  request.content.subtitle = "1 < 2";
  const platform::NotificationCategory category{"c", {{"more", "More"}}, true};
  BusNotificationOptions application{"News", "", "", ""};
  const auto text = [&](std::uint32_t version) {
    return std::string(
        TextPtr(g_variant_print(portalArguments(application, request, category, "", version).get(), FALSE))
            .get());
  };
  const std::string first =
      "('a%2F%FF', {'title': <'A <b>title</b>'>, 'body': <'1 < 2'>, 'priority': <'normal'>, "
      "'default-action': <'notification-response'>, 'default-action-target': <('a/\uFFFD', '" +
      std::string(platform::defaultActionIdentifier) +
      "')>, 'buttons': <[{'label': <'More'>, 'action': <'notification-response'>, "
      "'target': <('a/\uFFFD', 'more')>}]>";
  EXPECT_EQ(text(1), first + "})");
  EXPECT_EQ(text(2), first + ", 'sound': <'silent'>})");
  application.exportedAction = "app.response";
  request.content = {};
  request.content.sound = platform::NotificationSound::defaultSound();
  EXPECT_THAT(text(3), HasSubstr("{'title': <'News'>, 'priority'"));
  EXPECT_THAT(text(3), HasSubstr("'default-action': <'app.response'>"));
  EXPECT_THAT(text(3), HasSubstr("'sound': <'default'>"));
}

TEST_F(PortalNotificationsTest, ShowsAnewAndTellsOfTaps) {
  PortalServer portal(address);
  open();
  showAndWait("a/b", "First");
  showAndWait("a/b", "Second");
  const std::string keys = " title priority default-action default-action-target";
  EXPECT_THAT(portal.calls,
              ElementsAre("remove a%2Fb", "add a%2Fb" + keys, "remove a%2Fb", "add a%2Fb" + keys));
  portal.invoke("a%2Fb", "[]");  // nothing of ours
  portal.invoke("a%2Fb", "[<1>, <{'x': <1>}>]");
  portal.invoke("a%2Fb", "[<('other', 'more')>]");
  portal.invoke("a%2Fb", "[<('a/b', 'more')>, <{'activation-token': <'+token'>}>]");
  portal.invoke("old", "[<('old', 'open')>]");  // of an earlier process
  waitUntil([&] { return heard.size() == 2; });
  EXPECT_THAT(heard, ElementsAre("a/b:Second:more+token", "old::open"));
  EXPECT_THAT(gone, ElementsAre("a/b3"));

  showAndWait("c", "Third");
  portal.calls.clear();
  notifications->remove({"c", "older"});
  show("d", "Fourth");
  notifications->remove({"d"});
  waitUntil([&] { return notifications->idle() && answers.size() == 4; });
  EXPECT_THAT(portal.calls, ElementsAre("remove c", "remove older", "remove d"));
  EXPECT_EQ(answers.back(), "Fourth");
  EXPECT_THAT(gone, ElementsAre("a/b3", "c3"));
}

TEST_F(PortalNotificationsTest, ItsIconIsASquareOfThePicture) {
  PortalServer portal(address);
  open();
  showAndWait("a", "Picture",
              file("wide.png", testing_support::pngFile(30, 10, 3, std::vector<std::uint8_t>(900, 7))));
  ASSERT_EQ(portal.icons.size(), 1u);
  const auto info = posix::makeImageDecoder()->inspect(portal.icons[0], 1000);
  ASSERT_TRUE(info.ok());
  EXPECT_EQ(info->fileExtension, "png");
  EXPECT_EQ(info->width, 10);
  EXPECT_EQ(info->height, 10);

  testing::internal::CaptureStderr();
  showAndWait("b", "Broken", file("broken.png", "\x89PNG\r\n\x1a\n and no more"));
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("is shown without its picture: "));
  EXPECT_EQ(portal.icons.size(), 1u);
  EXPECT_THAT(answers, ElementsAre("Picture", "Broken"));
}

TEST_F(PortalNotificationsTest, SaysWhyNothingIsShownAndAsksEachPortalForItsVersion) {
  open();
  showAndWait("a", "no portal");
  EXPECT_THAT(answers.back(), HasSubstr("no portal: org.freedesktop.DBus.Error.ServiceUnknown"));
  std::optional<PortalServer> portal(std::in_place, address, 2);
  showAndWait("a", "newer");
  EXPECT_THAT(portal->calls.back(), HasSubstr(" sound"));
  portal->refuses = true;
  showAndWait("a", "refused");
  EXPECT_EQ(answers.back(), "refused: org.freedesktop.portal.Error.InvalidArgument: not allowed");
  portal.reset();
  portal.emplace(address, 1);
  showAndWait("a", "older");
  EXPECT_EQ(answers.back(), "older");

  show("a", "under way");
  queue->runUntilIdle();
  notifications.reset();
  queue->runUntilIdle();
  EXPECT_EQ(answers.back(), "under way: the application ended before it was shown");
}

TEST_F(PortalNotificationsTest, IsForSandboxesAlone) {
  EXPECT_FALSE(insideSandbox(folder.path()));
  file(".flatpak-info", "");
  EXPECT_TRUE(insideSandbox(folder.path()));
  PortalServer portal(address);
  NotificationServer desktop(address);
  open(false);
  showAndWait("a", "here");
  EXPECT_EQ(desktop.shown.size(), 1u);
  EXPECT_THAT(portal.calls, ElementsAre());
}

}  // namespace
}  // namespace VorselKelp::freedesktop
