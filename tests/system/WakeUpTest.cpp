#include "VorselKelpSystem/WakeUp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>
#include <vector>

#include "VorselKelpPosix/EventLoop.h"

namespace VorselKelp::system {
namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

class WakeUpTest : public testing::Test {
 protected:
  std::function<void()> noting(const std::string& name) {
    return [this, name] { calls_.push_back(name); };
  }
  /// Runs until there were so many calls.
  bool run(std::size_t calls) {
    return loop_->run([&] { return calls_.size() >= calls; },
                      posix::EventLoop::Clock::now() + std::chrono::seconds(30));
  }

  std::vector<std::string> calls_;
  const std::shared_ptr<posix::EventLoop> loop_ = std::make_shared<posix::EventLoop>();
  std::shared_ptr<WakeUp> wakeUp_ = *makeWakeUp(loop_);
};

TEST_F(WakeUpTest, CallsOnceWhenTheTimeHasCome) {
  const double due = now() + 0.05;
  wakeUp_->at(due, noting("soon"));
  ASSERT_TRUE(run(1));
  EXPECT_GE(now(), due);
  // What has passed is due at once; what no clock shows is, too.
  for (const double past : {due, 0.0, -5.0, std::numeric_limits<double>::quiet_NaN()}) {
    calls_.clear();
    wakeUp_->at(past, noting("past"));
    EXPECT_TRUE(run(1)) << past;
  }
  calls_.clear();
  wakeUp_->at(std::numeric_limits<double>::infinity(), noting("never"));
  wakeUp_->at(now() + 0.02, noting("in its place"));
  ASSERT_TRUE(run(1));
  EXPECT_EQ(calls_, std::vector<std::string>{"in its place"});
}

TEST_F(WakeUpTest, TakesBackACallThatIsOnItsWay) {
  wakeUp_->at(0, noting("cancelled"));
  wakeUp_->cancel();
  wakeUp_->at(0, noting("replaced"));
  wakeUp_->at(0, noting("last"));
  ASSERT_TRUE(run(1));
  EXPECT_EQ(calls_, std::vector<std::string>{"last"});
  wakeUp_->at(0, noting("gone with its object"));
  wakeUp_ = nullptr;
  loop_->run([] { return true; }, posix::EventLoop::Clock::now());
  EXPECT_EQ(calls_.size(), 1u);
}

}  // namespace
}  // namespace VorselKelp::system
