#include "VorselKelpSimulator/SimulatedDevice.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "VorselKelpSimulator/Arrivals.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/DeviceInspection.h"
#include "VorselKelpSimulator/Installation.h"
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

TEST_F(SimulatedDeviceTest, TellsSendersSinceWhenATokenReachesNobody) {
  const auto standing = [&](const std::string& token) { return *device_.standingOf(token); };
  const auto first = *device_.registerForRemoteNotifications();
  ASSERT_TRUE(device_.advanceClock(86400).ok()) << "senders know the machine's clock alone";
  EXPECT_TRUE(standing(first).registered && !standing(first).gone);
  EXPECT_FALSE(standing("another").registered || standing("another").gone);
  const auto before =
      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  device_.unregisterForRemoteNotifications();
  EXPECT_NEAR(*standing(first).gone, before, 60);
  EXPECT_FALSE(standing(first).registered);
  EXPECT_EQ(*device_.registerForRemoteNotifications(), first);
  EXPECT_TRUE(standing(first).registered && !standing(first).gone);

  ASSERT_TRUE(device_.forget().ok());
  EXPECT_NEAR(*standing(first).gone, before, 60);
  EXPECT_FALSE(inspectDevice(home_, "com.example.news").token);
  for (int round = 0; round < 30; ++round) {
    const auto token = *SimulatedDevice(home_, "com.example.news").registerForRemoteNotifications();
    EXPECT_NE(token, first);
    EXPECT_TRUE(standing(token).registered);
    ASSERT_TRUE(device_.forget().ok());
    EXPECT_TRUE(standing(token).gone);
  }
  EXPECT_FALSE(standing(first).gone) << "the newest are kept";
}

TEST_F(SimulatedDeviceTest, UninstallsAnApplicationAndNoOther) {
  const auto manifestOf = [](const std::string& identifier) {
    return *parseManifest(
        R"({"bundleIdentifier": ")" + identifier +
        R"(", "version": "1", "apiKey": "k", "appGroupId": "group.both", "endpoints": {}})");
  };
  const auto news = manifestOf("com.example.news"), weather = manifestOf("com.example.weather");
  SimulatedDevice other(home_, "com.example.weather");
  platform::NotificationRequest request;
  request.identifier = "one";
  for (auto* each : {&device_, &other}) {
    each->setAuthorization(platform::AuthorizationStatus::authorized);
    each->setBadge(3);
    each->changeCategories({}, {{"c", {}, false}});
    ASSERT_TRUE(each->registerForRemoteNotifications() && each->deliver(request) &&
                each->keepResponse("one", "tap"));
  }
  ASSERT_TRUE(Arrivals(home_, "com.example.news").put({"two", "{}"}).ok());
  for (const auto* each : {&news, &weather})
    fs::create_directories(home_.container(*each, ProcessKind::serviceExtension));
  const auto group = home_.groupContainers() + "/group.both";
  fs::create_directories(group);

  ASSERT_TRUE(uninstall(home_, news).ok());
  EXPECT_TRUE(device_.delivered().empty() && device_.categories().empty() && device_.takeResponses().empty());
  EXPECT_EQ(device_.authorization(), platform::AuthorizationStatus::notDetermined);
  EXPECT_EQ(device_.badge(), 0);
  EXPECT_EQ(Arrivals(home_, "com.example.news").count(), 0u);
  EXPECT_FALSE(fs::exists(home_.container(news, ProcessKind::serviceExtension)));
  EXPECT_TRUE(other.remoteToken() && other.badge() == 3 && other.delivered().size() == 1u);
  EXPECT_EQ(other.categories().size() + other.takeResponses().size(), 2u);
  EXPECT_TRUE(fs::exists(group)) << "the other one shares it";
  ASSERT_TRUE(uninstall(home_, weather) && uninstall(home_, weather));
  EXPECT_FALSE(fs::exists(group));
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

  for (
      const char* damaged :
      {"", "{", "{}", "[1]", R"({"clockOffset": 1e999, "registrations": {}})",
       R"({"clockOffset": 1, "registrations": {"a": {"token": "0g", "registered": true}}})",
       R"({"clockOffset": 1, "registrations": {"a": {"token": "00"}}})",
       R"({"clockOffset": 1, "off": 1, "registrations": {}})",
       R"({"clockOffset": 1, "registrations": {"a": {"token": "00", "registered": true, "gone": {"0": 1}}}})"}) {
    std::ofstream(home_.deviceFile(), std::ios::trunc) << damaged;
    EXPECT_EQ(device_.clockOffset(), 0) << damaged;
    EXPECT_EQ(device_.remoteToken(), std::nullopt) << damaged;
    EXPECT_FALSE(device_.registerForRemoteNotifications().ok()) << damaged;
    EXPECT_FALSE(device_.advanceClock(1) || device_.isOff() || device_.setOff(true)) << damaged;
  }
}

}  // namespace
}  // namespace VorselKelp::simulator
