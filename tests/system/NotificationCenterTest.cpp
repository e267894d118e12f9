#include "VorselKelpSystem/NotificationCenter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/ManualMainQueue.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

using platform::AuthorizationStatus;
using Texts = std::vector<std::string>;

struct Screen final : NotificationPresenter {
  void show(const platform::NotificationRequest& request, const platform::NotificationCategory& category,
            Shown shown) override {
    seen.push_back(request.identifier + "/" + std::to_string(category.actions.size()));
    shown(refusal ? Status(*refusal) : Status(Done{}));
  }
  void takeAway(const Texts& identifiers) override {
    for (const auto& identifier : identifiers) seen.push_back("-" + identifier);
  }
  [[nodiscard]] Texts take() { return std::exchange(seen, {}); }
  Texts seen;
  std::optional<Error> refusal;
};

struct Alarm final : WakeUp {
  void at(double wanted, std::function<void()> due) override {
    time = wanted;
    call = std::move(due);
  }
  void cancel() override {
    time = std::nullopt;
    call = nullptr;
  }
  void ring() {
    time = std::nullopt;
    if (const auto due = std::exchange(call, nullptr)) due();
  }
  std::optional<double> time;
  std::function<void()> call;
};

struct IconBadge final : Badge {
  void show(std::int64_t number) override { shown = number; }
  std::int64_t shown = 0;
};

struct Asker final : PermissionAsker {
  void ask(unsigned options, Answer answer) override {
    asked.push_back(options);
    answers.push_back(std::move(answer));
  }
  std::vector<unsigned> asked;
  std::vector<Answer> answers;
};

platform::NotificationRequest reminder(const std::string& identifier, double seconds, bool repeats = false) {
  platform::NotificationRequest request;
  request.identifier = identifier;
  request.content.categoryIdentifier = "buttons";
  request.trigger = {seconds, repeats};
  return request;
}

class NotificationCenterTest : public testing::Test {
 protected:
  std::shared_ptr<NotificationStore> openStore() const {
    return std::make_shared<NotificationStore>(folder_.path(), "com.example.news", clock_);
  }
  std::shared_ptr<NotificationCenter> makeCenter(CenterPorts ports) const {
    ports.store = openStore();
    ports.mainQueue = queue_;
    return makeNotificationCenter(std::move(ports));
  }
  /// What a process that shows notifications has.
  std::shared_ptr<NotificationCenter> makeShowing() const {
    return makeCenter({nullptr, nullptr, nullptr, screen_, alarm_, badge_});
  }
  void allow() const { openStore()->setAuthorization(AuthorizationStatus::authorized); }
  /// The time passes, and what waits for it happens.
  void pass(double seconds) const {
    clock_->advance(seconds);
    queue_->runUntilIdle();
    while (alarm_->time && *alarm_->time <= clock_->now()) {
      alarm_->ring();
      queue_->runUntilIdle();
    }
  }

  testing_support::TemporaryFolder folder_;
  const std::shared_ptr<testing_platform::ManualClock> clock_ =
      std::make_shared<testing_platform::ManualClock>();
  const std::shared_ptr<testing_platform::ManualMainQueue> queue_ =
      std::make_shared<testing_platform::ManualMainQueue>(clock_);
  const std::shared_ptr<Screen> screen_ = std::make_shared<Screen>();
  const std::shared_ptr<Alarm> alarm_ = std::make_shared<Alarm>();
  const std::shared_ptr<IconBadge> badge_ = std::make_shared<IconBadge>();
};

std::vector<platform::NotificationCategory> read(platform::NotificationCenter& center) {
  std::vector<platform::NotificationCategory> found;
  center.getNotificationCategories([&](auto categories) { found = std::move(categories); });
  std::sort(found.begin(), found.end(),
            [](const auto& a, const auto& b) { return a.identifier < b.identifier; });
  return found;
}

TEST_F(NotificationCenterTest, AddsCategoriesOfTwoProcessesTogether) {
  const platform::NotificationCategory kept{
      "kept", {{"no", "No", platform::NotificationActionOption::destructive}}, true};
  const auto one = makeCenter({});
  const auto two = makeCenter({});
  one->setNotificationCategories({{"old", {}, false}, kept});

  // Both read the same set, and each writes its own addition.
  auto first = read(*one);
  auto second = read(*two);
  ASSERT_EQ(second.size(), 2u);
  EXPECT_EQ(second[0], kept);
  first.push_back({"of one", {}, true});
  second.erase(second.begin() + 1);
  second.push_back({"of two", {}, true});
  one->setNotificationCategories(first);
  two->setNotificationCategories(second);
  const auto all = read(*one);
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0], kept);
  EXPECT_EQ(all[1].identifier, "of one");
  EXPECT_EQ(all[2].identifier, "of two");

  // A name is any text; what was half written does not count, and does not harm what comes behind it.
  const platform::NotificationCategory odd{std::string("1:\0x", 4), {{"", "2:ab"}}, false};
  const auto file = folder_ / "com.example.news.categories";
  for (const char* torn : {"1:", "1:+3:abc1:", "1:?3:abc", "x", "99999999999999999999:a", "1:+1:k1:11:9"}) {
    read(*one);
    one->setNotificationCategories({odd});
    std::ofstream(file, std::ios::app) << torn;
    EXPECT_EQ(read(*two), std::vector{odd}) << torn;
    two->setNotificationCategories({odd, kept});
    EXPECT_EQ(read(*makeCenter({})), (std::vector{odd, kept})) << torn;
  }
  // Changed again and again it does not grow for ever.
  for (int i = 0; i < 2000; ++i)
    one->setNotificationCategories({{"changing", {{"no", std::string(80, 'x')}}, i % 2 == 0}});
  EXPECT_LT(std::filesystem::file_size(file), 100u << 10);
  EXPECT_EQ(read(*two).at(0).identifier, "changing");

  // Who never looked replaces everything.
  makeCenter({})->setNotificationCategories({{"alone", {}, false}});
  EXPECT_EQ(read(*two).size(), 1u);
}

TEST_F(NotificationCenterTest, ShowsWhatComesDueAtItsTime) {
  allow();
  const auto center = makeShowing();
  center->setNotificationCategories({{"buttons", {{"a", "A"}, {"b", "B"}}, false}});
  auto badged = reminder("second", 20);
  badged.content.badge = 4;
  center->add(badged);
  center->add(reminder("first", 10));
  center->add(reminder("hourly", 3600, true));
  center->add(reminder("removed", 15));
  center->removePendingNotificationRequests({"removed"});
  pass(9);
  EXPECT_EQ(screen_->take(), Texts{});
  EXPECT_DOUBLE_EQ(*alarm_->time, clock_->now() + 1);
  pass(1);
  EXPECT_EQ(screen_->take(), Texts{"first/2"});
  EXPECT_EQ(badge_->shown, 0);
  pass(10);
  EXPECT_EQ(screen_->take(), Texts{"second/2"});
  EXPECT_EQ(badge_->shown, 4);
  pass(3580);
  EXPECT_EQ(screen_->take(), Texts{"hourly/2"});
  // The machine slept, or its clock was set: each interval that passed is not one more.
  pass(4 * 3600);
  EXPECT_EQ(screen_->take(), Texts{"hourly/2"});
  EXPECT_DOUBLE_EQ(*alarm_->time, clock_->now() + 3600);
  center->removeDeliveredNotifications({"second", "hourly"});
  pass(0);
  EXPECT_EQ(screen_->take(), (Texts{"-second", "-hourly"}));
  center->removePendingNotificationRequests({"hourly"});
  pass(0);
  EXPECT_FALSE(alarm_->time);
}

TEST_F(NotificationCenterTest, WakesByTheMachinesClock) {
  const auto loop = std::make_shared<posix::EventLoop>();
  const auto store =
      std::make_shared<NotificationStore>(folder_.path(), "com.example.news", posix::makeClock());
  store->setAuthorization(AuthorizationStatus::authorized);
  const auto center = makeNotificationCenter({store, loop, nullptr, screen_, *makeWakeUp(loop), nullptr});
  // Each from when it is added, which may take as long.
  center->add(reminder("sooner", 0.03));
  center->add(reminder("later", 0.06));
  EXPECT_TRUE(loop->run([&] { return screen_->seen.size() == 2; },
                        posix::EventLoop::Clock::now() + std::chrono::seconds(60)));
  EXPECT_EQ(screen_->take(), (Texts{"sooner/0", "later/0"}));
}

TEST_F(NotificationCenterTest, ShowsAtTheStartWhatCameDueWhileNobodyRan) {
  allow();
  openStore()->setBadge(1);
  ASSERT_TRUE(openStore()->schedule(reminder("once", 10)).ok());
  ASSERT_TRUE(openStore()->schedule(reminder("hourly", 3600, true)).ok());
  ASSERT_TRUE(openStore()->schedule(reminder("removed", 10)).ok());
  clock_->advance(5 * 3600);
  // Somebody may have looked who shows nothing.
  EXPECT_EQ(openStore()->delivered().size(), 3u);
  openStore()->removeDelivered({"removed"});
  const auto one = makeShowing();
  const auto two = makeShowing();
  pass(0);
  EXPECT_EQ(screen_->take(), (Texts{"once/0", "hourly/0"})) << "two processes look at once";
  const auto later = makeShowing();
  pass(0);
  EXPECT_EQ(screen_->take(), Texts{});
}

TEST_F(NotificationCenterTest, ShowsNothingWhereItIsNotAllowed) {
  const auto center = makeShowing();
  auto now = reminder("now", 0);
  now.trigger = std::nullopt;
  center->add(now);
  center->add(reminder("later", 1));
  Texts answers;
  const auto deliver = [&] {
    center->deliver(
        now, [&](const Status& shown) { answers.push_back(shown ? "shown" : shown.error().description); });
    EXPECT_TRUE(answers.empty()) << "the main thread is not waited for";
    queue_->runUntilIdle();
    return std::exchange(answers, {});
  };
  EXPECT_EQ(deliver(), Texts{"the user does not allow notifications"});
  pass(5);
  EXPECT_EQ(screen_->take(), Texts{});
  EXPECT_TRUE(openStore()->delivered().empty());

  allow();
  EXPECT_EQ(deliver(), Texts{"shown"});
  center->add(now);
  pass(0);
  EXPECT_EQ(screen_->take(), (Texts{"now/0", "now/0"}));
  screen_->refusal = Error{"the screen is full"};
  EXPECT_EQ(deliver(), Texts{"the screen is full"});
  testing::internal::CaptureStderr();
  center->add(reminder("late", 1));
  pass(1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The notification \"late\" is not shown: the screen is full\n");
}

TEST_F(NotificationCenterTest, TriesAgainWhatTheScreenRefused) {
  allow();
  auto center = makeShowing();
  screen_->refusal = Error{"nobody is there"};
  for (const char* identifier : {"kept", "removed", "replaced"}) center->add(reminder(identifier, 10));
  testing::internal::CaptureStderr();
  pass(10);
  EXPECT_EQ(screen_->take().size(), 3u);
  center->removeDeliveredNotifications({"removed"});
  center->add(reminder("replaced", 1000));
  pass(59);
  EXPECT_EQ(screen_->take(), Texts{"-removed"});
  pass(1);
  EXPECT_EQ(screen_->take(), Texts{"kept/0"});
  pass(59);
  const auto lines = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 3) << lines;
  EXPECT_NE(lines.find("The notification \"kept\" is not shown: nobody is there\n"), std::string::npos);

  // Another reason is another line, and another process tries at its start.
  screen_->refusal = Error{"the screen is full"};
  testing::internal::CaptureStderr();
  pass(1);
  EXPECT_EQ(screen_->take(), Texts{"kept/0"});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The notification \"kept\" is not shown: the screen is full\n");
  screen_->refusal.reset();
  center = makeShowing();
  pass(0);
  EXPECT_EQ(screen_->take(), Texts{"kept/0"});
  pass(1000);
  EXPECT_EQ(screen_->take(), Texts{"replaced/0"});
  EXPECT_FALSE(alarm_->time);
}

TEST_F(NotificationCenterTest, AsksOneQuestionForAllAndAgainWhenItCouldNotBeAsked) {
  const auto asker = std::make_shared<Asker>();
  Texts answers;
  const auto ask = [&](NotificationCenter& center) {
    center.requestAuthorization(5, [&](bool granted, const std::optional<Error>& error) {
      answers.push_back(error ? error->description : granted ? "granted" : "refused");
    });
    queue_->runUntilIdle();
    return std::exchange(answers, {});
  };
  EXPECT_EQ(ask(*makeCenter({})), Texts{"the user can't be asked here"});
  const auto center = makeCenter({nullptr, nullptr, asker, nullptr, nullptr, nullptr});
  EXPECT_EQ(ask(*center), Texts{});
  EXPECT_EQ(ask(*center), Texts{});
  EXPECT_EQ(asker->asked, std::vector<unsigned>{5});
  asker->answers[0](Error{"no screen"});
  EXPECT_EQ(answers, (Texts{"no screen", "no screen"}));
  answers.clear();
  EXPECT_EQ(ask(*center), Texts{});
  ASSERT_EQ(asker->answers.size(), 2u);
  asker->answers[1](true);
  EXPECT_EQ(answers, Texts{"granted"});
  answers.clear();
  EXPECT_EQ(ask(*center), Texts{"granted"});
}

}  // namespace
}  // namespace VorselKelp::system
