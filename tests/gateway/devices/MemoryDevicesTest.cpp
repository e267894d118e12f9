#include "gateway/devices/MemoryDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VorselKelpPosix/EventLoop.h"

namespace gateway {
namespace {

using testing::ElementsAre;

class MemoryDevicesTest : public testing::Test {
 protected:
  Answer answerTo(const std::string& token, const std::string& payload = {},
                  const std::string& topic = "com.example.news",
                  std::optional<std::int64_t> expiration = {}) {
    Answer answer{0};
    devices_.deliver(
        {.device = token, .topic = topic, .identifier = "i", .expiration = expiration, .payload = payload},
        [&](Answer given) { answer = std::move(given); });
    return answer;
  }
  void runLoop() {
    bool last = false;
    loop_->async([&] { last = true; });
    loop_->run([&] { return last; }, VorselKelp::posix::EventLoop::Clock::time_point::max());
  }

  const std::shared_ptr<VorselKelp::posix::EventLoop> loop_ =
      std::make_shared<VorselKelp::posix::EventLoop>();
  const std::string first_ = std::string(32, 'a'), second_ = std::string(32, 'b');
  std::vector<std::string> received_;
  MemoryDevices devices_{
      {first_, second_}, "com.example.news", loop_, [this](std::size_t device, const Notification& each) {
        received_.push_back(std::to_string(device) + each.payload);
      }};
};

TEST_F(MemoryDevicesTest, AnswersAtOnceAndHandsOverInOrder) {
  EXPECT_TRUE(devices_.takes(first_) && !devices_.takes("short"));
  EXPECT_EQ(answerTo(std::string(32, 'c')).reason, "BadDeviceToken");
  EXPECT_EQ(answerTo(first_, "", "com.example.weather").reason, "DeviceTokenNotForTopic");
  EXPECT_EQ(answerTo(second_, "x").status, 200);
  EXPECT_EQ(answerTo(first_, "now or never", "com.example.news", 0).status, 200);
  EXPECT_THAT(received_, ElementsAre());
  runLoop();
  EXPECT_THAT(received_, ElementsAre("1x", "0now or never"));
}

TEST_F(MemoryDevicesTest, TakesNoMoreThanItCanHold) {
  std::size_t taken = 0;
  Answer answer;
  while (taken < 1'000'000 && (answer = answerTo(first_)).status == 200) ++taken;
  EXPECT_EQ(answer.reason, "TooManyRequests");
  EXPECT_EQ(answer.retryAfter, "1");
  runLoop();
  EXPECT_EQ(received_.size(), taken);
  EXPECT_EQ(answerTo(second_).status, 200);
}

}  // namespace
}  // namespace gateway
