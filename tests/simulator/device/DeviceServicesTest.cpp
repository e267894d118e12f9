#include "VorselKelpSimulator/DeviceServices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::simulator {
namespace {

class DeviceServicesTest : public testing::Test {
 protected:
  std::shared_ptr<SimulatedDevice> openDevice() const {
    return std::make_shared<SimulatedDevice>(DeviceHome(folder_.path()), "com.example.news");
  }
  std::shared_ptr<DeviceNotificationCenter> makeCenter(DialogAnswer answer) const {
    return makeNotificationCenter(openDevice(), loop_, answer);
  }
  void runLoop() {
    ASSERT_TRUE(loop_->run([] { return true; }, posix::EventLoop::Clock::now() + posix::loopDuration(10)));
  }
  static void ask(DeviceNotificationCenter& center, std::vector<std::string>& answers) {
    center.requestAuthorization(7, [&answers](bool granted, const std::optional<Error>& error) {
      answers.push_back(std::string(granted ? "granted" : "refused") + (error ? " with an error" : ""));
    });
  }

  testing_support::TemporaryFolder folder_;
  std::shared_ptr<posix::EventLoop> loop_ = std::make_shared<posix::EventLoop>();
};

TEST_F(DeviceServicesTest, AsksTheUserOnceAndRemembersTheAnswer) {
  const auto center = makeCenter(DialogAnswer::deny);
  std::vector<std::string> answers;
  ask(*center, answers);
  ask(*center, answers);
  EXPECT_TRUE(answers.empty());
  runLoop();
  EXPECT_EQ(answers, (std::vector<std::string>{"refused", "refused"}));

  // A user who has decided is not asked again.
  const auto later = makeCenter(DialogAnswer::allow);
  ask(*later, answers);
  EXPECT_EQ(answers.back(), "refused");
  EXPECT_EQ(openDevice()->authorization(), platform::AuthorizationStatus::denied);
}

TEST_F(DeviceServicesTest, AnswersAnIgnoredDialogWhenTheProcessEnds) {
  std::vector<std::string> answers;
  {
    const auto center = makeCenter(DialogAnswer::none);
    ask(*center, answers);
    runLoop();
    EXPECT_TRUE(answers.empty());
    center->dismissDialog();
    EXPECT_EQ(answers, (std::vector<std::string>{"refused with an error"}));
    ask(*center, answers);
  }
  EXPECT_EQ(answers.size(), 2u);
  EXPECT_EQ(openDevice()->authorization(), platform::AuthorizationStatus::notDetermined);
}

std::vector<platform::NotificationCategory> read(platform::NotificationCenter& center) {
  std::vector<platform::NotificationCategory> found;
  center.getNotificationCategories([&](auto categories) { found = std::move(categories); });
  std::sort(found.begin(), found.end(),
            [](const auto& a, const auto& b) { return a.identifier < b.identifier; });
  return found;
}

TEST_F(DeviceServicesTest, AddsCategoriesOfTwoProcessesTogether) {
  const platform::NotificationCategory kept{
      "kept", {{"no", "No", platform::NotificationActionOption::destructive}}, true};
  const auto one = makeCenter(DialogAnswer::none);
  const auto two = makeCenter(DialogAnswer::none);
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
    EXPECT_EQ(read(*makeCenter(DialogAnswer::none)), (std::vector{odd, kept})) << torn;
  }
  // Changed again and again it does not grow for ever.
  for (int i = 0; i < 2000; ++i)
    one->setNotificationCategories({{"changing", {{"no", std::string(80, 'x')}}, i % 2 == 0}});
  EXPECT_LT(std::filesystem::file_size(file), 100u << 10);
  EXPECT_EQ(read(*two).at(0).identifier, "changing");

  // Who never looked replaces everything.
  makeCenter(DialogAnswer::none)->setNotificationCategories({{"alone", {}, false}});
  EXPECT_EQ(read(*two).size(), 1u);
}

TEST_F(DeviceServicesTest, BringsTheTokenOnTheMainQueue) {
  std::vector<std::string> tokens;
  const auto application = makeApplication(
      openDevice(), loop_,
      [&](Result<std::string> token) { tokens.push_back(token ? *token : token.error().description); },
      [](const auto&) {});
  application->registerForRemoteNotifications();
  application->registerForRemoteNotifications();
  EXPECT_TRUE(tokens.empty());
  runLoop();
  ASSERT_EQ(tokens.size(), 2u);
  EXPECT_EQ(tokens[0].size(), 32u);
  EXPECT_EQ(tokens[0], tokens[1]);
}

}  // namespace
}  // namespace VorselKelp::simulator
