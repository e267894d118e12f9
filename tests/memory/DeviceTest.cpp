#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::AuthorizationStatus;
using platform::NotificationCategory;
using platform::NotificationRequest;
using testing::ElementsAre;

NotificationRequest notification(const std::string& identifier, double seconds = 0, bool repeats = false) {
  NotificationRequest request;
  request.identifier = identifier;
  if (seconds != 0) request.trigger = platform::TimeIntervalTrigger{seconds, repeats};
  return request;
}

std::vector<std::string> identifiers(const std::vector<NotificationRequest>& requests) {
  std::vector<std::string> all;
  for (const auto& request : requests) all.push_back(request.identifier);
  return all;
}

TEST(ManualMainQueue, RunsInOrderAndNeverInsideAsync) {
  MemoryPlatform app;
  std::vector<int> order;
  app.mainQueue->asyncAfter(1, [&] { order.push_back(4); });
  app.mainQueue->async([&] {
    order.push_back(1);
    app.mainQueue->async([&] { order.push_back(3); });
  });
  app.mainQueue->asyncAfter(-5, [&] { order.push_back(2); });
  EXPECT_TRUE(order.empty());
  EXPECT_EQ(app.mainQueue->runUntilIdle(), 3u);
  app.device->advance(0.5);
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
  app.device->advance(0.5);
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 4));
}

TEST(MemoryDevice, TimePassesForAllProcessesInOneOrder) {
  const auto device = std::make_shared<MemoryDevice>();
  MemoryPlatform app(device);
  MemoryPlatform service(device, ProcessKind::extension, "com.example.app.service");
  std::vector<double> times;
  const auto note = [&] { times.push_back(device->clock->uptime()); };
  app.mainQueue->asyncAfter(3, note);
  service.mainQueue->asyncAfter(2, [&] {
    note();
    app.mainQueue->asyncAfter(0.5, note);
  });
  device->notificationCenter->add(notification("due", 2.25));
  device->clock->setNow(0);  // a jump of the wall clock moves no timer
  device->advance(2.4);
  EXPECT_THAT(identifiers(device->notificationCenter->delivered()), ElementsAre("due"));
  device->advance(10);
  EXPECT_THAT(times, ElementsAre(2, 2.5, 3));
  EXPECT_DOUBLE_EQ(device->clock->now(), 12.4);
}

TEST(ManualClock, AWaitThatFindsNothingLetsItsTimePass) {
  MemoryDevice device;
  const auto semaphore = device.clock->makeSemaphore();
  semaphore->signal();
  EXPECT_TRUE(semaphore->wait(5));
  EXPECT_EQ(device.clock->uptime(), 0);
  EXPECT_FALSE(semaphore->wait(5));
  EXPECT_EQ(device.clock->uptime(), 5);
}

TEST(MemoryNotificationCenter, TheUserAnswersOnce) {
  struct Case {
    DialogBehaviour behaviour;
    bool granted;
    bool error;
    AuthorizationStatus after;
  };
  const Case cases[] = {{DialogBehaviour::allows, true, false, AuthorizationStatus::authorized},
                        {DialogBehaviour::denies, false, false, AuthorizationStatus::denied},
                        {DialogBehaviour::cannotAsk, false, true, AuthorizationStatus::notDetermined}};
  for (const auto& c : cases) {
    MemoryDevice device;
    auto& center = *device.notificationCenter;
    center.setDialogBehaviour(c.behaviour);
    int answers = 0;
    center.requestAuthorization(7, [&](bool granted, std::optional<Error> error) {
      ++answers;
      EXPECT_EQ(granted, c.granted);
      EXPECT_EQ(error.has_value(), c.error);
    });
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(center.authorizationStatus(), c.after);
    EXPECT_THAT(center.authorizationRequests(), ElementsAre(7u));
  }
}

TEST(MemoryNotificationCenter, AnOpenDialogIsAnsweredLaterOrWithAnErrorAtTheEnd) {
  int granted = 0;
  int failed = 0;
  const auto answer = [&](bool allow, const std::optional<Error>& error) {
    granted += allow;
    failed += error.has_value();
  };
  {
    MemoryDevice device;
    auto& center = *device.notificationCenter;
    center.setDialogBehaviour(DialogBehaviour::leavesOpen);
    center.requestAuthorization(1, answer);
    EXPECT_EQ(granted + failed, 0);
    EXPECT_TRUE(center.answerDialog(true));
    EXPECT_FALSE(center.answerDialog(true));
    center.setAuthorizationStatus(AuthorizationStatus::notDetermined);
    center.requestAuthorization(1, answer);
  }
  EXPECT_EQ(granted, 1);
  EXPECT_EQ(failed, 1);
}

TEST(MemoryNotificationCenter, ReplacesByIdentifierAndRefusesImpossibleTriggers) {
  MemoryDevice device;
  auto& center = *device.notificationCenter;
  center.add(notification("a", 10));
  center.add(notification("b"));
  center.add(notification("b", 20));
  center.add(notification("bad", 30, true));
  EXPECT_THAT(identifiers(center.pending()), ElementsAre("a", "b"));
  EXPECT_TRUE(center.delivered().empty());
  center.add(notification("a"));
  EXPECT_THAT(identifiers(center.pending()), ElementsAre("b"));
  center.removePendingNotificationRequests({"b", "unknown"});
  center.removeDeliveredNotifications({"a"});
  EXPECT_TRUE(center.pending().empty() && center.delivered().empty());
  center.add(notification("r", 60, true));
  device.advance(120);
  EXPECT_THAT(identifiers(center.delivered()), ElementsAre("r"));
  EXPECT_THAT(identifiers(center.pending()), ElementsAre("r"));
  EXPECT_THAT(identifiers(center.added()), ElementsAre("a", "b", "b", "bad", "a", "r"));
}

TEST(MemoryNotificationCenter, TakesAttachmentsOverAndRemovesThemWithTheirFolder) {
  MemoryDevice device;
  auto& center = *device.notificationCenter;
  ASSERT_TRUE(device.files->write("/c/n1/a.png", "x"));
  ASSERT_TRUE(device.files->write("/c/b.png", "x"));
  auto request = notification("n");
  request.content.attachments = {{"i", "/c/n1/a.png"}};
  center.deliver(request);
  center.deliver(request);
  EXPECT_TRUE(device.files->exists("/c/n1/a.png")) << "the replacing notification shows the same file";
  center.removeDeliveredNotifications({"n"});
  EXPECT_FALSE(device.files->exists("/c/n1"));
  EXPECT_THAT(device.files->paths(), ElementsAre("/c/b.png"));
}

TEST(MemoryNotificationCenter, CategoriesAreASetAndTheirAnswerCanBeHeld) {
  MemoryDevice device;
  auto& center = *device.notificationCenter;
  center.setNotificationCategories({{"b", {}, true}, {"a", {}, false}, {"b", {}, false}});
  const NotificationCategory a{"a", {}, false};
  const NotificationCategory b{"b", {}, true};
  EXPECT_THAT(center.categories(), ElementsAre(a, b));
  center.holdCategoryAnswers(true);
  std::size_t heard = 0;
  center.getNotificationCategories([&](const auto& categories) { heard = categories.size(); });
  EXPECT_EQ(heard, 0u);
  EXPECT_EQ(center.answerHeldCategories(), 1u);
  EXPECT_EQ(heard, 2u);
}

}  // namespace
}  // namespace VorselKelp::testing_platform
