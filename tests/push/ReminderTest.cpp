#include "push/Reminder.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "core/TestCore.h"
#include "push/ServiceTest.h"
#include "push/Tags.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing_platform::MemoryNotificationCenter;

constexpr const char* fixedIdentifier = "UUID().uuidString";

struct ReminderTest : testing::Test {
  ReminderTest() { core.app.standardDomain->setObject("vs_push", {true}); }
  MemoryNotificationCenter& center() { return *core.app.device->notificationCenter; }
  double interval() { return center().pending().at(0).trigger.value().seconds; }

  TestCore core;
  Reminder reminder{core.context};
};

TEST_F(ReminderTest, ThereIsOneAndItRepeatsEveryMinuteAtMost) {
  const double shortest = 60;
  for (const double wanted : {30.0, 0.0, -5.0, 59.999, 60.0, 3600.0}) {
    reminder.schedule(wanted);
    ASSERT_THAT(center().pending(), SizeIs(1)) << "a new one replaces the old";
    EXPECT_EQ(interval(), std::max(wanted, shortest));
  }
  const auto request = center().pending().at(0);
  EXPECT_EQ(request.identifier, fixedIdentifier);
  EXPECT_EQ(core.text("vs_sch_id"), fixedIdentifier);
  EXPECT_TRUE(request.trigger->repeats);
  EXPECT_EQ(request.content.title, "Hey, we are missing you!");
  EXPECT_EQ(request.content.subtitle, "Check our app again.");
  EXPECT_EQ(request.content.body, "");
  EXPECT_EQ(request.content.sound, platform::NotificationSound::defaultSound());
  reminder.setText("Come back");
  EXPECT_EQ(core.text("vs_notification_text"), "Come back") << "where installations carry it";
  reminder.schedule(3600);
  EXPECT_EQ(center().pending().at(0).content.title, "Come back");
}

TEST_F(ReminderTest, WithPushOffOrWithoutANumberOfSecondsNothingIsScheduled) {
  using Limits = std::numeric_limits<double>;
  reminder.schedule(90);
  for (const double strange : {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity()}) {
    reminder.schedule(strange);
    EXPECT_EQ(core.app.console->texts().size(), 1u) << "a line says why";
    core.app.standardDomain->setObject("vs_sch_int", {strange});
    reminder.update();
    core.app.console->clear();
    EXPECT_EQ(interval(), 90) << "the one that is there stays";
  }
  core.app.standardDomain->setObject("vs_push", {false});
  core.app.standardDomain->setObject("vs_sch_int", {90.0});
  reminder.update();
  EXPECT_THAT(core.app.console->texts(), ElementsAre("Cannot schedule notifications, please enable push"));
  EXPECT_FALSE(core.text("vs_sch_id"));
  EXPECT_THAT(center().pending(), IsEmpty());
}

TEST_F(ReminderTest, ItComesAgainAndAgainUntilCancelled) {
  reminder.schedule(100);
  core.app.device->advance(99);
  EXPECT_THAT(center().delivered(), IsEmpty());
  core.app.device->advance(1);
  EXPECT_THAT(center().delivered(), SizeIs(1));
  center().removeDeliveredNotifications({fixedIdentifier});
  core.app.device->advance(100);
  EXPECT_THAT(center().delivered(), SizeIs(1));

  center().deliver({"other", {}, {}});
  reminder.cancel();
  EXPECT_FALSE(core.text("vs_sch_id"));
  EXPECT_THAT(center().pending(), IsEmpty());
  ASSERT_THAT(center().delivered(), SizeIs(1));
  EXPECT_EQ(center().delivered().at(0).identifier, "other");

  center().deliver({fixedIdentifier, {}, {}});
  reminder.cancel();
  EXPECT_THAT(center().delivered(), SizeIs(2)) << "none is scheduled: nothing to cancel";
}

TEST_F(KellpTest, TheSchedulerUsesTheStoredInterval) {
  start();
  VorselKellp::setNotification("Still there?");
  VorselKellp::updateScheduler();
  EXPECT_THAT(device_->notificationCenter->added(), IsEmpty()) << "no interval was ever stored";
  (void)VorselBuilder("key", group).scheduleNotifications(1800);
  VorselKellp::updateScheduler();
  device_->advance(1000);
  VorselKellp::updateScheduler();
  device_->advance(1000);
  EXPECT_THAT(device_->notificationCenter->delivered(), IsEmpty()) << "scheduled anew half-way";
  device_->advance(800);
  ASSERT_THAT(device_->notificationCenter->delivered(), SizeIs(1));
  EXPECT_EQ(device_->notificationCenter->delivered()[0].content.title, "Still there?");
  VorselKellp::cancelScheduledNotifications();
  EXPECT_THAT(device_->notificationCenter->delivered(), IsEmpty());
  EXPECT_THAT(device_->notificationCenter->pending(), IsEmpty());
}

class TagTest : public ServiceTest {
 protected:
  static std::string tagged(const std::string& tag, const std::string& more = "") {
    return message(R"(,"n":{"cl":1,"tag":")" + tag + "\"" + more + "}");
  }
  void show(const std::string& json, const std::string& identifier) {
    deliver(json, identifier);
    device_->notificationCenter->deliver(request(json, identifier));
  }
  std::vector<std::string> shown() const {
    std::vector<std::string> identifiers;
    for (const auto& one : device_->notificationCenter->delivered()) identifiers.push_back(one.identifier);
    return identifiers;
  }
  std::optional<platform::DefaultsValue> tags() const { return store().object("vs_tags"); }
};

TEST_F(TagTest, ANotificationTakesThePlaceOfTheOneWithItsTag) {
  using Map = platform::DefaultsValue::Map;
  using platform::TextList;
  show(message(R"(,"n":{"cl":1})"), "untagged");
  EXPECT_FALSE(tags());
  show(tagged("news"), "1");
  show(tagged("sport"), "2");
  EXPECT_THAT(shown(), ElementsAre("untagged", "1", "2"));
  show(tagged("news"), "3");
  EXPECT_THAT(shown(), ElementsAre("untagged", "2", "3"));
  const Map newest{{"news", {TextList{"3"}}}, {"sport", {TextList{"2"}}}};
  EXPECT_EQ(tags(), platform::DefaultsValue{newest});

  const TextList several{"untagged", "2"};
  store().setObject("vs_tags", {Map{{"news", {several}}}});
  show(tagged("news"), "4");
  EXPECT_THAT(shown(), ElementsAre("3", "4")) << "all of the list go";
  store().setObject("vs_tags", {std::string("damaged")});
  show(tagged("news"), "5");
  EXPECT_EQ(tags(), (platform::DefaultsValue{Map{{"news", {TextList{"5"}}}}}));
}

TEST_F(TagTest, OneThatWasDeliveredMeanwhileGoesAsWell) {
  using Map = platform::DefaultsValue::Map;
  show(tagged("t"), "1");
  device_->notificationCenter->deliver(request("{}", "meanwhile"));
  takeTag(*CoreContext::current("a test"), "t", "2", [&] {
    EXPECT_THAT(shown(), ElementsAre("meanwhile"));
    store().setObject("vs_tags", {Map{{"t", {platform::TextList{"meanwhile"}}}}});
  });
  EXPECT_THAT(shown(), IsEmpty());
  EXPECT_EQ(tags(), (platform::DefaultsValue{Map{{"t", {platform::TextList{"2"}}}}}));
}

TEST_F(TagTest, TheOlderOneIsGoneWhenTheHandlerRunsWithOrWithoutAnImage) {
  show(tagged("t"), "1");
  const auto best = std::make_shared<platform::NotificationContent>();
  std::size_t calls = 0;
  const auto handler = [&](const auto&) {
    ++calls;
    EXPECT_THAT(shown(), IsEmpty());
  };
  VorselKellp::didReceiveNotification(request(tagged("t"), "2"), best, handler);
  EXPECT_EQ(calls, 1u);

  device_->notificationCenter->deliver(request("{}", "2"));
  VorselKellp::didReceiveNotification(request(message(R"(,"n":{"tag":"t","image":"https://i/p.png"})"), "3"),
                                      best, handler);
  EXPECT_THAT(shown(), ElementsAre("2")) << "it stays until the new one is ready";
  service_.urlSession->setRule("*", status(404));
  service_.settle();
  EXPECT_EQ(calls, 2u);
}

}  // namespace
}  // namespace VorselKelp
