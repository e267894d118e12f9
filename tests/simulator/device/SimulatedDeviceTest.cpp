#include "VorselKelpSimulator/SimulatedDevice.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "VorselKelpSimulator/DeviceHome.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::simulator {
namespace {

namespace fs = std::filesystem;

class SimulatedDeviceTest : public testing::Test {
 protected:
  testing_support::TemporaryFolder folder_;
  DeviceHome home_{folder_ / "home"};
  const std::string database_ = home_.path() + "/notifications.sqlite";
  SimulatedDevice device_{home_, "com.example.news"};
};

TEST_F(SimulatedDeviceTest, KeepsATokenPerApplicationAcrossProcesses) {
  const auto token = device_.registerForRemoteNotifications();
  ASSERT_TRUE(token.ok());
  EXPECT_EQ(token->size(), 32u);
  SimulatedDevice later(home_, "com.example.news");
  EXPECT_EQ(later.remoteToken(), *token);
  later.unregisterForRemoteNotifications();
  EXPECT_EQ(device_.remoteToken(), std::nullopt);
  EXPECT_EQ(*device_.registerForRemoteNotifications(), *token);
  EXPECT_EQ(SimulatedDevice(home_, "com.example.weather").remoteToken(), std::nullopt);
}

TEST_F(SimulatedDeviceTest, MovesItsClockForEveryProcessWithoutADatabase) {
  const auto clock = SimulatedDevice(home_, "com.example.weather").clock();
  const auto before = clock->now();
  EXPECT_FALSE(fs::exists(home_.path()));
  ASSERT_TRUE(device_.registerForRemoteNotifications().ok());
  EXPECT_FALSE(fs::exists(database_));
  ASSERT_TRUE(device_.advanceClock(500.5).ok());
  ASSERT_TRUE(device_.advanceClock(0).ok());
  EXPECT_NEAR(clock->now() - before, 500.5, 60);
  EXPECT_EQ(SimulatedDevice(home_, "com.example.weather").clockOffset(), 500.5);
  EXPECT_TRUE(device_.remoteToken()) << "moving the clock changes nothing else";

  for (const char* damaged :
       {"", "{", "{}", "[1]", R"({"clockOffset": 1e999, "registrations": {}})",
        R"({"clockOffset": 1, "registrations": {"a": {"token": "0g", "registered": true}}})",
        R"({"clockOffset": 1, "registrations": {"a": {"token": "00"}}})"}) {
    std::ofstream(home_.deviceFile(), std::ios::trunc) << damaged;
    EXPECT_EQ(device_.clockOffset(), 0) << damaged;
    EXPECT_EQ(device_.remoteToken(), std::nullopt) << damaged;
    EXPECT_FALSE(device_.registerForRemoteNotifications().ok()) << damaged;
    EXPECT_FALSE(device_.advanceClock(1).ok()) << damaged;
  }
}

}  // namespace
}  // namespace VorselKelp::simulator
