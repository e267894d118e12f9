#include "VorselKelpSimulator/SimulatedDevice.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>

#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/NotificationRecords.h"
#include "posix/support/ChildProcess.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::simulator {
namespace {

namespace fs = std::filesystem;
using platform::NotificationRequest;

NotificationRequest notification(const std::string& identifier, const std::string& title = "t") {
  NotificationRequest request;
  request.identifier = identifier;
  request.content.title = title;
  return request;
}

class SimulatedDeviceTest : public testing::Test {
 protected:
  NotificationRequest withFile(const std::string& identifier, const std::string& name) {
    const auto folder = folder_ / ("tmp-" + identifier + name);
    fs::create_directories(folder);
    std::ofstream(folder + "/" + name) << "picture";
    auto request = notification(identifier);
    request.content.attachments.push_back({"image", folder + "/" + name});
    return request;
  }

  testing_support::TemporaryFolder folder_;
  DeviceHome home_{folder_ / "home"};
  const std::string database_ = home_.path() + "/notifications.sqlite";
  const std::string attachments_ = home_.path() + "/attachments";
  SimulatedDevice device_{home_, "com.example.news"};
};

TEST_F(SimulatedDeviceTest, KeepsPermissionTokenAndBadgePerApplicationAcrossProcesses) {
  const auto token = device_.registerForRemoteNotifications();
  ASSERT_TRUE(token.ok());
  EXPECT_EQ(token->size(), 32u);
  device_.setAuthorization(platform::AuthorizationStatus::denied);
  device_.setBadge(7);

  SimulatedDevice later(home_, "com.example.news");
  EXPECT_EQ(later.remoteToken(), *token);
  EXPECT_EQ(later.authorization(), platform::AuthorizationStatus::denied);
  EXPECT_EQ(later.badge(), 7);
  later.unregisterForRemoteNotifications();
  EXPECT_EQ(device_.remoteToken(), std::nullopt);
  EXPECT_EQ(*device_.registerForRemoteNotifications(), *token);

  SimulatedDevice other(home_, "com.example.weather");
  EXPECT_EQ(other.remoteToken(), std::nullopt);
  EXPECT_EQ(other.authorization(), platform::AuthorizationStatus::notDetermined);
  EXPECT_EQ(other.badge(), 0);
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

TEST_F(SimulatedDeviceTest, GivesNotificationsBackAsTheyWere) {
  auto request = notification("a\nb", "\xc3\xa9\xf0\x9f\x8c\x8a");
  request.content.body = std::string("nul\0in it", 9);
  request.content.sound = platform::NotificationSound::named("ping.wav");
  request.content.badge = 3;
  request.content.categoryIdentifier = "c";
  request.content.userInfo = platform::UserInfo::fromJSON("{\"aps\": 1}");
  ASSERT_TRUE(device_.deliver(request).ok());
  const auto held = SimulatedDevice(home_, "com.example.news").delivered();
  ASSERT_EQ(held.size(), 1u);
  const auto& content = held[0].request.content;
  EXPECT_EQ(held[0].request.identifier, "a\nb");
  EXPECT_EQ(content.title, request.content.title);
  EXPECT_EQ(content.body, request.content.body);
  EXPECT_EQ(content.sound, request.content.sound);
  EXPECT_EQ(content.categoryIdentifier, "c");
  ASSERT_NE(content.userInfo.bytes(), nullptr);
  EXPECT_EQ(*content.userInfo.bytes(), "{\"aps\": 1}");
  EXPECT_EQ(device_.badge(), 3);
}

TEST_F(SimulatedDeviceTest, OwnsAttachmentsUntilTheirNotificationGoes) {
  const auto request = withFile("a", "sun.png");
  const auto original = request.content.attachments[0].path;
  const auto shown = *device_.deliver(request);
  ASSERT_EQ(shown.content.attachments.size(), 1u);
  const auto owned = shown.content.attachments[0].path;
  EXPECT_TRUE(fs::exists(owned));
  EXPECT_FALSE(fs::exists(fs::path(original).parent_path()));

  // A notification of the same identifier takes its place, and the old file goes.
  const auto second = *device_.deliver(withFile("a", "moon.png"));
  EXPECT_FALSE(fs::exists(fs::path(owned).parent_path()));
  device_.removeDelivered({"a", "unknown"});
  EXPECT_FALSE(fs::exists(second.content.attachments[0].path));
  EXPECT_TRUE(fs::is_empty(attachments_));

  auto missing = notification("b");
  missing.content.attachments.push_back({"image", folder_ / "nothing.png"});
  EXPECT_TRUE(device_.deliver(missing)->content.attachments.empty());
}

TEST_F(SimulatedDeviceTest, ClearsAwayWhatKilledProcessesLeftInItsFolder) {
  const auto kept = *device_.deliver(withFile("kept", "sun.png"));
  const auto forgotten = [&](const std::string& name) {
    fs::create_directories(attachments_ + "/" + name);
    std::ofstream(attachments_ + "/" + name + "/half.png") << "pict";
  };
  forgotten("old");
  for (const auto& folder : fs::directory_iterator(attachments_))
    fs::last_write_time(folder.path(), fs::file_time_type::clock::now() - std::chrono::hours(2));
  forgotten("fresh");
  ASSERT_TRUE(SimulatedDevice(home_, "com.example.weather").deliver(withFile("b", "moon.png")).ok());
  EXPECT_TRUE(fs::exists(kept.content.attachments[0].path)) << "another application's";
  EXPECT_FALSE(fs::exists(attachments_ + "/old"));
  EXPECT_TRUE(fs::exists(attachments_ + "/fresh")) << "its process may be at work";
}

TEST_F(SimulatedDeviceTest, DeliversPendingNotificationsWhenTheDevicesTimeHasCome) {
  auto once = withFile("once", "a.png");
  once.trigger = {100, false};
  auto repeating = withFile("repeating", "b.png");
  repeating.trigger = {60, true};
  ASSERT_TRUE(device_.schedule(once).ok());
  ASSERT_TRUE(device_.schedule(repeating).ok());
  auto unseen = withFile("unseen", "c.png");
  unseen.trigger = {1, false};
  unseen.content.badge = 9;
  ASSERT_TRUE(device_.schedule(unseen).ok());
  EXPECT_EQ(device_.pending().size(), 3u);
  ASSERT_TRUE(device_.advanceClock(2).ok());
  EXPECT_EQ(device_.pending().size(), 2u);
  EXPECT_TRUE(device_.delivered().empty()) << "the user has not allowed it";
  EXPECT_EQ(device_.badge(), 0);

  device_.setAuthorization(platform::AuthorizationStatus::authorized);
  ASSERT_TRUE(device_.advanceClock(128).ok());
  const auto delivered = device_.delivered();
  ASSERT_EQ(delivered.size(), 2u);
  EXPECT_EQ(delivered[0].request.identifier, "once");
  const auto pending = device_.pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_NEAR(pending[0].due - device_.clock()->now(), 50, 5);

  // Its file is still needed for the next time.
  device_.removeDelivered({"repeating"});
  EXPECT_TRUE(fs::exists(pending[0].request.content.attachments[0].path));
  device_.removePending({"repeating"});
  EXPECT_FALSE(fs::exists(pending[0].request.content.attachments[0].path));
}

TEST_F(SimulatedDeviceTest, LetsATapCrossAnotherOne) {
  const auto shown = *device_.deliver(withFile("a", "sun.png"));
  ASSERT_TRUE(device_.tappable("a"));
  device_.noteTapped("a");
  EXPECT_TRUE(device_.delivered().empty());
  EXPECT_FALSE(fs::exists(shown.content.attachments[0].path));
  ASSERT_TRUE(device_.tappable("a"));
  EXPECT_TRUE(device_.tappable("a")->content.attachments.empty());
  EXPECT_FALSE(device_.tappable("b"));
}

TEST_F(SimulatedDeviceTest, LosesNothingWhenProcessesWriteAtOnce) {
  constexpr int each = 40;
  const auto deliverMany = [&](const std::string& prefix) {
    SimulatedDevice device(home_, "com.example.news");
    for (int i = 0; i < each; ++i) {
      const auto identifier = prefix + std::to_string(i);
      if (!device.deliver(notification(identifier)).ok()) return false;
      device.changeCategories({}, {{identifier, {}, false}});
    }
    return true;
  };
  testing_support::ChildProcess one([&] { return deliverMany("one-"); });
  testing_support::ChildProcess two([&] { return deliverMany("two-"); });
  EXPECT_TRUE(one.succeeded());
  EXPECT_TRUE(two.succeeded());
  EXPECT_EQ(device_.delivered().size(), 2u * each);
  EXPECT_EQ(device_.categories().size(), 2u * each);
}

TEST_F(SimulatedDeviceTest, RefusesTimesThatNeverComeOrComeWithoutEnd) {
  auto request = withFile("a", "sun.png");
  for (const auto& [seconds, repeats] : {std::pair{0.0, false},
                                         {-1.0, false},
                                         {std::numeric_limits<double>::infinity(), false},
                                         {std::numeric_limits<double>::quiet_NaN(), true},
                                         {59.9, true}}) {
    request.trigger = {seconds, repeats};
    EXPECT_FALSE(device_.schedule(request).ok()) << seconds;
  }
  EXPECT_TRUE(device_.pending().empty());
  EXPECT_TRUE(fs::exists(request.content.attachments[0].path));
  request.trigger = {0.5, false};
  EXPECT_TRUE(device_.schedule(request).ok());
}

TEST_F(SimulatedDeviceTest, KeepsFilesAsTheyWereWhenNothingCanBeStored) {
  const auto held = *device_.deliver(withFile("a", "sun.png"));
  EXPECT_EQ(fs::status(home_.path()).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(database_).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  // A full disk, seen from here: rows can go, but none can come.
  sqlite3* opened = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &opened), SQLITE_OK);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, &sqlite3_close);
  ASSERT_EQ(sqlite3_exec(opened,
                         "CREATE TRIGGER full BEFORE INSERT ON notification "
                         "BEGIN SELECT RAISE(ABORT, 'disk full'); END",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  const auto refused = device_.deliver(withFile("a", "moon.png"));
  ASSERT_FALSE(refused.ok());
  EXPECT_NE(refused.error().description.find("disk full"), std::string::npos);
  auto later = withFile("b", "rain.png");
  later.trigger = {60, true};
  EXPECT_FALSE(device_.schedule(later).ok());
  // The old notification stands, with the only file that is left.
  ASSERT_EQ(device_.delivered().size(), 1u);
  EXPECT_TRUE(fs::exists(held.content.attachments[0].path));
  EXPECT_EQ(std::distance(fs::directory_iterator(attachments_), fs::directory_iterator()), 1);
}

TEST_F(SimulatedDeviceTest, SaysWhyAHomeIsOfNoUse) {
  std::ofstream(folder_ / "file") << "x";
  const auto blocked = SimulatedDevice(DeviceHome(folder_ / "file"), "a").open();
  ASSERT_FALSE(blocked.ok());
  fs::create_directories(home_.path());
  std::ofstream(database_) << std::string(5000, 'x');
  const auto garbage = device_.open();
  ASSERT_FALSE(garbage.ok());
  EXPECT_NE(garbage.error().description.find(database_), std::string::npos);
  EXPECT_TRUE(device_.delivered().empty());
}

TEST(NotificationRecords, ReadWhatAPhoneWouldShowOfARemoteNotification) {
  const auto original = [](const char* text) { return originalContent(*JSONAny::decode(text)); };
  const auto full = original(R"({"aps": {"alert": {"title": "T", "subtitle": "S", "body": "B"}, "badge": 4,
                                 "sound": {"name": "bell"}, "category": "c"}})");
  EXPECT_EQ(full.title, "T");
  EXPECT_EQ(full.subtitle, "S");
  EXPECT_EQ(full.body, "B");
  EXPECT_EQ(full.badge, 4);
  EXPECT_EQ(full.sound, platform::NotificationSound::named("bell"));
  EXPECT_EQ(full.categoryIdentifier, "c");
  const auto plain = original(R"({"aps": {"alert": "only text", "sound": "default"}})");
  EXPECT_EQ(plain.body, "only text");
  EXPECT_EQ(plain.sound, platform::NotificationSound::defaultSound());
  EXPECT_EQ(original(R"({"aps": {"alert": 3, "badge": "x"}})").badge, std::nullopt);
}

TEST(NotificationRecords, KeepOfATextWhatJSONCanHold) {
  EXPECT_EQ(lossyText("a\xc3\xa9\xff\xe2\x82z"), "a\xc3\xa9\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbdz");
  EXPECT_EQ(lossyText("\xed\xa0\x80"), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
  EXPECT_EQ(encodeLossy(JSONAny::List{"\xff", 1}), "[\"\xef\xbf\xbd\",1]");
}

}  // namespace
}  // namespace VorselKelp::simulator
