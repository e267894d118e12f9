#include "gateway/devices/MemoryDevices.h"

#include <gtest/gtest.h>

namespace gateway {
namespace {

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
  /// The device's number and the payload.
  std::string next() {
    const auto arrived = devices_.next();
    return arrived ? std::to_string(arrived->device) + arrived->notification.payload : "none";
  }

  const std::string first_ = std::string(32, 'a'), second_ = std::string(32, 'b');
  std::size_t wakes_ = 0;
  MemoryDevices devices_{{first_, second_}, "com.example.news", [this] { ++wakes_; }};
};

TEST_F(MemoryDevicesTest, AnswersAtOnceAndQueuesInOrder) {
  EXPECT_TRUE(devices_.takes(first_) && !devices_.takes("short"));
  EXPECT_EQ(answerTo(std::string(32, 'c')).reason, "BadDeviceToken");
  EXPECT_EQ(answerTo(first_, "", "com.example.weather").reason, "DeviceTokenNotForTopic");
  EXPECT_EQ(answerTo(second_, "x").status, 200);
  EXPECT_EQ(answerTo(first_, "now or never", "com.example.news", 0).status, 200);
  EXPECT_EQ(wakes_, 2u);
  EXPECT_EQ(next(), "1x");
  EXPECT_EQ(next(), "0now or never");
  EXPECT_EQ(next(), "none");
}

TEST_F(MemoryDevicesTest, DropsWhatExpiresWhileItWaits) {
  const auto now = std::chrono::system_clock::now().time_since_epoch() / std::chrono::seconds(1);
  EXPECT_EQ(answerTo(first_, "soon", "com.example.news", now + 1).status, 200);
  EXPECT_EQ(answerTo(first_, "later", "com.example.news", now + 3600).status, 200);
  while (std::chrono::system_clock::now().time_since_epoch() / std::chrono::seconds(1) < now + 1) {
  }
  EXPECT_EQ(next(), "0later");
  EXPECT_EQ(devices_.expired(), 1u);
}

TEST_F(MemoryDevicesTest, TakesNoMoreThanItCanHold) {
  std::size_t taken = 0;
  Answer answer;
  while (taken < 1'000'000 && (answer = answerTo(first_)).status == 200) ++taken;
  EXPECT_EQ(answer.reason, "TooManyRequests");
  EXPECT_EQ(answer.retryAfter, "1");
  EXPECT_EQ(next(), "0");
  EXPECT_EQ(answerTo(second_).status, 200);
}

}  // namespace
}  // namespace gateway
