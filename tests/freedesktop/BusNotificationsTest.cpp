#include "VorselKelpFreedesktop/BusNotifications.h"

#include <gmock/gmock.h>

#include <optional>

#include "bus/Connection.h"
#include "freedesktop/NotificationServer.h"

namespace VorselKelp::freedesktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint32_t expired = 1;
constexpr std::uint32_t dismissed = 2;

class BusNotificationsTest : public BusTest {
 protected:
  void start() {
    server.emplace(address);
    open(address);
  }
  void open(const std::string& where) {
    notifications = makeBusNotifications(
        {"News", "com.example.news", "", where}, queue,
        [this](const BusNotificationResponse& response) {
          heard.push_back(response.request.identifier + ":" + response.actionIdentifier +
                          response.activationToken);
        },
        [this](const std::string& identifier, CloseReason reason) {
          gone.push_back(identifier + std::to_string(static_cast<int>(reason)));
        });
  }

  static platform::NotificationRequest request(const std::string& identifier, const std::string& title) {
    platform::NotificationRequest made;
    made.identifier = identifier;
    made.content.title = title;
    return made;
  }

  /// The answers are put down as "title" or "title: error".
  void show(const std::string& identifier, const std::string& title,
            platform::NotificationCategory category = {}) {
    notifications->show(request(identifier, title), std::move(category), [this, title](const Status& status) {
      answers.push_back(status ? title : title + ": " + status.error().description);
    });
  }
  void showAndWait(const std::string& identifier, const std::string& title,
                   platform::NotificationCategory category = {}) {
    const auto before = answers.size();
    show(identifier, title, std::move(category));
    waitUntil([&] { return answers.size() > before; });
    ASSERT_EQ(answers.back(), title);
  }
  void waitForAnswers(std::size_t count) {
    waitUntil([&] { return answers.size() >= count; });
  }

  std::optional<NotificationServer> server;
  std::shared_ptr<BusNotifications> notifications;
  std::vector<std::string> answers;
  std::vector<std::string> heard;
  std::vector<std::string> gone;  ///< with the reason's number
};

TEST_F(BusNotificationsTest, TellsWhichButtonWasTappedWhateverItIsCalled) {
  start();
  const platform::NotificationCategory category{
      "c", {{"", "Empty"}, {"default", "Default"}, {"button-0", "Tricky"}}, false};
  for (const auto* identifier : {"a", "b", "c", "d"}) showAndWait(identifier, "Title", category);
  EXPECT_THAT(server->shown.front().actions, ElementsAre("default", "Open", "button-0", "Empty", "button-1",
                                                         "Default", "button-2", "Tricky"));
  server->invoke(1, "button-0");
  server->invoke(2, "button-1");
  server->invoke(3, "button-2");
  server->invoke(4, "default");
  waitUntil([&] { return heard.size() == 4; });
  EXPECT_THAT(heard, ElementsAre("a:", "b:default", "c:button-0",
                                 "d:" + std::string(platform::defaultActionIdentifier)));
  // A tapped notification goes, also where the desktop would keep it.
  waitUntil([&] { return server->closed.size() == 4; });
}

TEST_F(BusNotificationsTest, HearsOfItsOwnNotificationsOnceAndOfDismissalsWhenAsked) {
  start();
  showAndWait("quiet", "1");
  showAndWait("asking", "2", {"c", {}, true});
  showAndWait("expiring", "3", {"c", {}, true});
  showAndWait("last", "4");
  server->invoke(77, "default");  // of another application
  server->invoke(4, "button-0");  // never sent
  server->emit("ActionInvoked", g_variant_new("(ss)", "4", "default"));
  server->emit("NotificationClosed", nullptr);
  server->emit("ActivationToken", g_variant_new("(us)", 77, "other"));
  server->emit("ActivationToken", g_variant_new("(us)", 4, "+token"));
  server->close(1, dismissed);
  server->close(3, expired);
  server->close(3, expired);
  server->close(2, dismissed);
  server->close(2, dismissed);
  server->invoke(2, "default");
  server->invoke(4, "default");
  server->invoke(4, "default");
  showAndWait("after", "5");  // comes after all of these
  EXPECT_THAT(heard, ElementsAre("asking:" + std::string(platform::dismissActionIdentifier),
                                 "last:" + std::string(platform::defaultActionIdentifier) + "+token"));
  EXPECT_THAT(gone, ElementsAre("quiet2", "expiring1", "asking2", "last3"));
}

TEST_F(BusNotificationsTest, WhatHasExpiredMayBeTappedOrDismissedInTheHistory) {
  start();
  const std::string dismissal(platform::dismissActionIdentifier);
  const std::string tap(platform::defaultActionIdentifier);
  for (const auto* identifier : {"a", "b", "c", "d", "e"}) showAndWait(identifier, "Title", {"c", {}, true});
  for (std::uint32_t number = 1; number <= 5; ++number) server->close(number, expired);
  server->invoke(1, "default");
  server->close(2, dismissed);
  server->close(3, 77);
  server->close(4, 0);
  waitUntil([&] { return gone.size() == 9; });
  notifications->remove({"e"});
  waitUntil([&] { return gone.size() == 10; });
  EXPECT_THAT(heard, ElementsAre("a:" + tap, "b:" + dismissal));
  EXPECT_THAT(gone, ElementsAre("a1", "b1", "c1", "d1", "e1", "a3", "b2", "c4", "d4", "e3"));
}

TEST_F(BusNotificationsTest, FollowsTheLastOnesOnly) {
  start();
  for (std::size_t i = 0; i < 300; ++i) {
    show(std::to_string(i), "Title");
    if (i % 50 == 49) waitForAnswers(i + 1);  // a bus has limits too
  }
  EXPECT_EQ(gone.size(), 44u);
  server->invoke(44, "default");
  server->invoke(45, "default");  // number 44
  waitUntil([&] { return !heard.empty(); });
  EXPECT_THAT(heard, ElementsAre("44:" + std::string(platform::defaultActionIdentifier)));
}

TEST_F(BusNotificationsTest, ReplacesTheOneOfTheSameIdentifierAlsoWhileThatIsUnderWay) {
  start();
  server->holds = true;
  show("a", "first");
  waitUntil([&] { return server->shown.size() == 1; });
  show("a", "second");
  show("a", "third");
  show("b", "other");
  waitUntil([&] { return server->shown.size() == 2; });
  EXPECT_FALSE(notifications->idle());
  server->holds = false;
  server->release();
  waitForAnswers(4);
  EXPECT_THAT(answers, ElementsAre("second", "first", "other", "third"));
  EXPECT_EQ(server->shown.back().title, "third");
  EXPECT_EQ(server->shown.back().replaced, server->shown.front().number);
  EXPECT_TRUE(notifications->idle());
}

TEST_F(BusNotificationsTest, RemovesWhatIsShownOrOnItsWay) {
  start();
  showAndWait("a", "shown");
  server->holds = true;
  show("b", "on its way");
  waitUntil([&] { return server->shown.size() == 2; });
  show("b", "waiting");
  notifications->remove({"unknown", "a", "b"});
  show("b", "anew");
  queue->runUntilIdle();
  server->holds = false;
  server->release();
  waitForAnswers(4);
  EXPECT_THAT(answers, ElementsAre("shown", "waiting", "on its way", "anew"));
  EXPECT_THAT(server->closed, ElementsAre(1, 2));
  server->invoke(1, "default");
  server->invoke(3, "default");
  waitUntil([&] { return !heard.empty(); });
  EXPECT_THAT(heard, ElementsAre("b:" + std::string(platform::defaultActionIdentifier)));
}

TEST_F(BusNotificationsTest, ANewServersNumbersAreNotTheOldOnes) {
  start();
  showAndWait("a", "old");
  server.reset();
  server.emplace(address);
  showAndWait("b", "new");
  EXPECT_EQ(server->shown.front().number, 1u);
  server->invoke(1, "default");
  waitUntil([&] { return !heard.empty(); });
  EXPECT_THAT(heard, ElementsAre("b:" + std::string(platform::defaultActionIdentifier)));
  showAndWait("a", "again");
  EXPECT_EQ(server->shown.back().replaced, 0u);
  EXPECT_THAT(gone, ElementsAre("a4", "b3"));
}

TEST_F(BusNotificationsTest, SaysWhyNothingIsShown) {
  open("unix:path=/nonexistent/bus");
  show("a", "no bus");
  waitForAnswers(1);
  EXPECT_THAT(answers[0], HasSubstr("no bus: Could not connect"));
  testing::internal::CaptureStderr();
  notifications->show(request("a", "no bus"), {});
  waitUntil([&] { return notifications->idle(); });
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("does not show the notification \"a\""));

  open(address);
  show("a", "no server");
  waitForAnswers(2);
  EXPECT_THAT(answers[1], HasSubstr("org.freedesktop.DBus.Error.ServiceUnknown"));

  server.emplace(address);  // it came back: nothing has to be opened anew
  server->answersWrong = true;
  show("a", "nonsense");
  waitForAnswers(3);
  EXPECT_THAT(answers[2], HasSubstr("nonsense: "));

  server->answersWrong = false;
  server->refusal = "org.freedesktop.Notifications.Error.MaxNotificationsExceeded";
  show("a", "refusal");
  waitForAnswers(4);
  EXPECT_EQ(answers[3], "refusal: " + server->refusal + ": No more");

  server->refusal.clear();
  server->holds = true;
  show("a", "silence");
  waitUntil([&] { return server->shown.size() == 3; });
  advance(10);
  waitForAnswers(5);
  EXPECT_EQ(answers[4], "silence: there was no answer in time");

  show("a", "server gone");
  waitUntil([&] { return server->shown.size() == 4; });
  server.reset();
  waitForAnswers(6);
  EXPECT_THAT(answers[5], HasSubstr("server gone: org.freedesktop.DBus.Error."));

  server.emplace(address);
  showAndWait("a", "at last");
}

TEST_F(BusNotificationsTest, EndsWhatIsUnderWayWhenTheBusGoes) {
  const ObjectPtr<GTestDBus> bus(g_test_dbus_new(G_TEST_DBUS_NONE));
  g_test_dbus_up(bus.get());
  const std::string where = g_test_dbus_get_bus_address(bus.get());
  server.emplace(where);
  open(where);
  showAndWait("a", "shown");
  server->holds = true;
  show("b", "under way");
  waitUntil([&] { return server->shown.size() == 2; });
  const auto watcher = std::make_shared<Connection>(BusKind::session, where, queue);
  int lost = 0;
  int replies = 0;
  watcher->whenLost([&] { ++lost; });
  const auto ping = [&] {
    watcher->call({"org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping"}, nullptr,
                  [&](const Result<VariantPtr>&) { ++replies; });
    waitUntil([&, before = replies] { return replies > before; });
  };
  ping();
  EXPECT_EQ(lost, 0);
  g_test_dbus_stop(bus.get());
  waitForAnswers(2);
  EXPECT_THAT(answers[1], HasSubstr("under way: "));
  show("a", "nowhere");
  waitForAnswers(3);
  EXPECT_THAT(answers[2], HasSubstr("nowhere: "));
  EXPECT_THAT(gone, ElementsAre("a4"));
  while (replies < 100 && lost == 0) ping();  // it learns of it in its own time
  EXPECT_EQ(lost, 1);
}

TEST_F(BusNotificationsTest, AnswersWhatIsUnderWayWhenItGoes) {
  start();
  server->holds = true;
  show("a", "sent");
  waitUntil([&] { return server->shown.size() == 1; });
  show("a", "waiting");
  notifications.reset();
  queue->runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("sent: the application ended before it was shown",
                                   "waiting: the application ended before it was shown"));
}

}  // namespace
}  // namespace VorselKelp::freedesktop
