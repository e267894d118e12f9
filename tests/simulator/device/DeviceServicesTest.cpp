#include "VorselKelpSimulator/DeviceServices.h"

#include <gtest/gtest.h>

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
  std::shared_ptr<system::NotificationCenter> makeCenter(DialogAnswer answer) const {
    return makeNotificationCenter(openDevice(), loop_, makeSimulatedUser(answer));
  }
  void runLoop() {
    ASSERT_TRUE(loop_->run([] { return true; }, posix::EventLoop::Clock::now() + posix::loopDuration(10)));
  }
  static void ask(system::NotificationCenter& center, std::vector<std::string>& answers) {
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
    center->endQuestion();
    EXPECT_EQ(answers, (std::vector<std::string>{"refused with an error"}));
    ask(*center, answers);
  }
  EXPECT_EQ(answers.size(), 2u);
  EXPECT_EQ(openDevice()->authorization(), platform::AuthorizationStatus::notDetermined);
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
