#include "gateway/devices/DeskDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "VorselKelpSimulator/Installation.h"
#include "posix/support/TemporaryFolder.h"

namespace gateway {
namespace {

namespace fs = std::filesystem;
namespace simulator = VorselKelp::simulator;
using testing::ElementsAre;

class DeskDevicesTest : public testing::Test {
 protected:
  /// An application whose user allows notifications. `programs`: its member of the manifest, with a comma.
  phone::Target install(const std::string& identifier, const std::string& programs = {}) {
    const auto manifest = folder_ / (identifier + ".json");
    std::ofstream(manifest) << R"({"bundleIdentifier": ")" << identifier << "\"," << programs
                            << R"("version": "1", "apiKey": "k", "appGroupId": "group.com.example.news",
            "endpoints": {"collection": "http://127.0.0.1:9", "tag": "http://127.0.0.1:9",
            "events": "http://127.0.0.1:9", "adFeed": "http://127.0.0.1:9", "script": "http://127.0.0.1:9"}})";
    auto target = phone::Target::open(folder_ / "home", manifest);
    EXPECT_TRUE(target.ok());
    target->device().setAuthorization(VorselKelp::platform::AuthorizationStatus::authorized);
    return *std::move(target);
  }
  [[nodiscard]] std::string script(const std::string& line) const {
    const auto path = folder_ / "program";
    std::ofstream(path) << "#!/bin/sh\n" << line << '\n';
    fs::permissions(path, fs::perms::owner_all);
    return path;
  }
  static Answer answerOf(DeskDevices& devices, Notification notification) {
    std::promise<Answer> promise;
    devices.deliver(std::move(notification), [&](Answer answer) { promise.set_value(std::move(answer)); });
    return promise.get_future().get();
  }
  Answer answerTo(DeskDevices& devices, const std::string& token,
                  const std::string& topic = "com.example.news") {
    return answerOf(devices, {.device = token, .topic = topic, .identifier = "i", .payload = alert("t")});
  }
  static std::string alert(const std::string& title) {
    return R"({"aps": {"alert": {"title": ")" + title + "\"}}}";
  }
  /// Whoever delivers has the lock that this one waits for.
  static void waitUntilDelivered(const phone::Target& target) {
    auto arrivals = target.arrivals();
    while (arrivals.count() > 0)
      ASSERT_TRUE(arrivals.deliver([](const auto&) { return simulator::Arrivals::Taken::notYet; }).ok());
  }
  static std::vector<std::string> shownBy(const phone::Target& target) {
    std::vector<std::string> shown;
    for (const auto& held : target.device().delivered())
      shown.push_back(held.request.identifier + " " + held.request.content.title);
    return shown;
  }

  VorselKelp::testing_support::TemporaryFolder folder_;
};

TEST_F(DeskDevicesTest, FollowsTheTokensOfItsApplications) {
  const auto news = install("com.example.news"), weather = install("com.example.weather");
  DeskDevices devices({news, weather});
  EXPECT_TRUE(devices.takes(std::string(32, 'a')));
  EXPECT_FALSE(devices.takes(std::string(31, 'a')));
  EXPECT_EQ(answerTo(devices, std::string(32, 'a')).reason, "BadDeviceToken");

  const auto first = *news.device().registerForRemoteNotifications();
  const auto other = *weather.device().registerForRemoteNotifications();
  EXPECT_EQ(answerTo(devices, first).status, 200);
  EXPECT_EQ(answerTo(devices, other, "com.example.weather").status, 200);
  EXPECT_EQ(answerTo(devices, other).reason, "DeviceTokenNotForTopic");

  const auto before = std::chrono::system_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
  news.device().unregisterForRemoteNotifications();
  auto gone = answerTo(devices, first);
  EXPECT_EQ(gone.status, 410);
  EXPECT_EQ(gone.reason, "Unregistered");
  EXPECT_NEAR(static_cast<double>(*gone.timestamp), static_cast<double>(before), 60'000);
  EXPECT_EQ(*news.device().registerForRemoteNotifications(), first);
  EXPECT_EQ(answerTo(devices, first).status, 200);
  ASSERT_TRUE(simulator::uninstall(news.home, news.manifest).ok());
  EXPECT_EQ(answerTo(devices, first).status, 410);
  EXPECT_EQ(answerTo(devices, *news.device().registerForRemoteNotifications()).status, 200);

  std::ofstream(news.home.deviceFile(), std::ios::trunc) << "{";
  EXPECT_EQ(answerTo(devices, first).status, 503);
}

TEST_F(DeskDevicesTest, DeliversInOrderAsThePhoneWould) {
  const auto woken = folder_ / "woken";
  const auto news =
      install("com.example.news", R"("programs": {"application": ")" + script("cat > " + woken) + "\"},");
  const auto token = *news.device().registerForRemoteNotifications();
  // As left by a process that was killed.
  ASSERT_TRUE(news.arrivals().put({"left", alert("Left")}).ok());
  DeskDevices devices({news});
  const auto send = [&](const std::string& identifier, const std::string& collapse,
                        const std::string& payload) {
    const Notification notification{.device = token,
                                    .topic = "com.example.news",
                                    .identifier = identifier,
                                    .collapse = collapse,
                                    .payload = payload};
    EXPECT_EQ(answerOf(devices, notification).status, 200);
  };
  send("one", "score", alert("1:0"));
  send("two", "", R"({"aps": {"mutable-content": 1, "alert": {"title": "Extended", "n": {"body": "b"}}}})");
  send("three", "score", alert("2:0"));
  waitUntilDelivered(news);
  EXPECT_THAT(shownBy(news), ElementsAre("left Left", "two Extended", "score 2:0"));

  const std::string silent = R"({"aps": {"content-available": 1}})";
  send("four", "", silent);
  waitUntilDelivered(news);
  std::string handedOver;
  std::getline(std::ifstream(woken), handedOver);
  EXPECT_EQ(handedOver, silent);
  EXPECT_EQ(shownBy(news).size(), 3u);

  news.device().setAuthorization(VorselKelp::platform::AuthorizationStatus::denied);
  send("five", "", alert("dropped"));
  waitUntilDelivered(news);
  EXPECT_EQ(shownBy(news).size(), 3u);

  news.device().setAuthorization(VorselKelp::platform::AuthorizationStatus::authorized);
  ASSERT_TRUE(news.device().setOff(true).ok());
  send("six", "", alert("replaced"));
  send("seven", "", alert("kept"));
  EXPECT_EQ(shownBy(news).size(), 3u);
  ASSERT_TRUE(news.device().setOff(false).ok());
  send("eight", "", alert("next"));
  waitUntilDelivered(news);
  EXPECT_THAT(shownBy(news),
              ElementsAre("left Left", "two Extended", "score 2:0", "seven kept", "eight next"));
}

TEST_F(DeskDevicesTest, LosesNothingWhenItEnds) {
  const auto news =
      install("com.example.news", R"("programs": {"service": ")" + script("exec sleep 60") + "\"},");
  const auto token = *news.device().registerForRemoteNotifications();
  const auto began = std::chrono::steady_clock::now();
  {
    DeskDevices devices({news});
    for (const auto* each : {"one", "two"}) {
      const Notification notification{
          .device = token,
          .topic = "com.example.news",
          .identifier = each,
          .payload = R"({"aps": {"mutable-content": 1, "alert": {"title": "t", "n": {"body": "b"}}}})"};
      EXPECT_EQ(answerOf(devices, notification).status, 200);
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(20));
  EXPECT_EQ(news.arrivals().count(), 2u);
  EXPECT_TRUE(shownBy(news).empty());
}

}  // namespace
}  // namespace gateway
