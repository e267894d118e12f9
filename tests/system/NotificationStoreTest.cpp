#include "VorselKelpSystem/NotificationStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <set>

#include "VorselKelpTesting/ManualClock.h"
#include "posix/support/ChildProcess.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

namespace fs = std::filesystem;
using platform::NotificationRequest;

NotificationRequest notification(const std::string& identifier, const std::string& title = "t") {
  NotificationRequest request;
  request.identifier = identifier;
  request.content.title = title;
  return request;
}

class NotificationStoreTest : public testing::Test {
 protected:
  NotificationRequest withFile(const std::string& identifier, const std::string& name) {
    const auto folder = folder_ / ("tmp-" + identifier + name);
    fs::create_directories(folder);
    std::ofstream(folder + "/" + name) << "picture";
    auto request = notification(identifier);
    request.content.attachments.push_back({"image", folder + "/" + name});
    return request;
  }

  bool advance(double seconds) {
    clock_->advance(seconds);
    return store_.deliverDue().ok();
  }

  testing_support::TemporaryFolder folder_;
  const std::string home_ = folder_ / "home";
  const std::string database_ = home_ + "/notifications.sqlite";
  const std::string attachments_ = home_ + "/attachments";
  const std::shared_ptr<testing_platform::ManualClock> clock_ =
      std::make_shared<testing_platform::ManualClock>();
  NotificationStore store_{home_, "com.example.news", clock_};
};

TEST_F(NotificationStoreTest, KeepsPermissionAndBadgePerApplicationAcrossProcesses) {
  store_.setAuthorization(platform::AuthorizationStatus::denied);
  store_.setBadge(7);

  NotificationStore later(home_, "com.example.news", clock_);
  EXPECT_EQ(later.authorization(), platform::AuthorizationStatus::denied);
  EXPECT_EQ(later.badge(), 7);

  NotificationStore other(home_, "com.example.weather", clock_);
  EXPECT_EQ(other.authorization(), platform::AuthorizationStatus::notDetermined);
  EXPECT_EQ(other.badge(), 0);
}

TEST_F(NotificationStoreTest, GivesNotificationsBackAsTheyWere) {
  auto request = notification("a\nb", "\xc3\xa9\xf0\x9f\x8c\x8a");
  request.content.body = std::string("nul\0in it", 9);
  request.content.sound = platform::NotificationSound::named("ping.wav");
  request.content.badge = 3;
  request.content.categoryIdentifier = "c";
  request.content.userInfo = platform::UserInfo::fromJSON("{\"aps\": 1}");
  ASSERT_TRUE(store_.deliver(request).ok());
  const auto held = NotificationStore(home_, "com.example.news", clock_).delivered();
  ASSERT_EQ(held.size(), 1u);
  const auto& content = held[0].request.content;
  EXPECT_EQ(held[0].request.identifier, "a\nb");
  EXPECT_EQ(content.title, request.content.title);
  EXPECT_EQ(content.body, request.content.body);
  EXPECT_EQ(content.sound, request.content.sound);
  EXPECT_EQ(content.categoryIdentifier, "c");
  ASSERT_NE(content.userInfo.bytes(), nullptr);
  EXPECT_EQ(*content.userInfo.bytes(), "{\"aps\": 1}");
  EXPECT_EQ(store_.badge(), 3);
}

TEST_F(NotificationStoreTest, OwnsAttachmentsUntilTheirNotificationGoes) {
  const auto request = withFile("a", "sun.png");
  const auto original = request.content.attachments[0].path;
  const auto shown = *store_.deliver(request);
  ASSERT_EQ(shown.content.attachments.size(), 1u);
  const auto owned = shown.content.attachments[0].path;
  EXPECT_TRUE(fs::exists(owned));
  EXPECT_FALSE(fs::exists(fs::path(original).parent_path()));

  // A notification of the same identifier takes its place, and the old file goes.
  const auto second = *store_.deliver(withFile("a", "moon.png"));
  EXPECT_FALSE(fs::exists(fs::path(owned).parent_path()));
  store_.removeDelivered({"a", "unknown"});
  EXPECT_FALSE(fs::exists(second.content.attachments[0].path));
  EXPECT_TRUE(fs::is_empty(attachments_));

  auto missing = notification("b");
  missing.content.attachments.push_back({"image", folder_ / "nothing.png"});
  EXPECT_TRUE(store_.deliver(missing)->content.attachments.empty());
}

TEST_F(NotificationStoreTest, ClearsAwayWhatKilledProcessesLeftInItsFolder) {
  const auto kept = *store_.deliver(withFile("kept", "sun.png"));
  const auto forgotten = [&](const std::string& name) {
    fs::create_directories(attachments_ + "/" + name);
    std::ofstream(attachments_ + "/" + name + "/half.png") << "pict";
  };
  forgotten("old");
  for (const auto& folder : fs::directory_iterator(attachments_))
    fs::last_write_time(folder.path(), fs::file_time_type::clock::now() - std::chrono::hours(2));
  forgotten("fresh");
  ASSERT_TRUE(
      NotificationStore(home_, "com.example.weather", clock_).deliver(withFile("b", "moon.png")).ok());
  EXPECT_TRUE(fs::exists(kept.content.attachments[0].path)) << "another application's";
  EXPECT_FALSE(fs::exists(attachments_ + "/old"));
  EXPECT_TRUE(fs::exists(attachments_ + "/fresh")) << "its process may be at work";
}

TEST_F(NotificationStoreTest, DeliversPendingNotificationsWhenTheDevicesTimeHasCome) {
  auto once = withFile("once", "a.png");
  once.trigger = {100, false};
  auto repeating = withFile("repeating", "b.png");
  repeating.trigger = {60, true};
  ASSERT_TRUE(store_.schedule(once).ok());
  ASSERT_TRUE(store_.schedule(repeating).ok());
  auto unseen = withFile("unseen", "c.png");
  unseen.trigger = {1, false};
  unseen.content.badge = 9;
  ASSERT_TRUE(store_.schedule(unseen).ok());
  EXPECT_EQ(store_.pending().size(), 3u);
  ASSERT_TRUE(advance(2));
  EXPECT_EQ(store_.pending().size(), 2u);
  EXPECT_TRUE(store_.delivered().empty()) << "the user has not allowed it";
  EXPECT_EQ(store_.badge(), 0);

  store_.setAuthorization(platform::AuthorizationStatus::authorized);
  ASSERT_TRUE(advance(128));
  const auto delivered = store_.delivered();
  ASSERT_EQ(delivered.size(), 2u);
  EXPECT_EQ(delivered[0].request.identifier, "once");
  const auto pending = store_.pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_DOUBLE_EQ(pending[0].due - clock_->now(), 50);

  // Its file is still needed for the next time.
  store_.removeDelivered({"repeating"});
  EXPECT_TRUE(fs::exists(pending[0].request.content.attachments[0].path));
  store_.removePending({"repeating"});
  EXPECT_FALSE(fs::exists(pending[0].request.content.attachments[0].path));
}

TEST_F(NotificationStoreTest, KeepsTheNewestOfThoseDelivered) {
  const auto picture = store_.deliver(withFile("first", "a.png"))->content.attachments[0].path;
  auto repeating = withFile("repeating", "b.png");
  repeating.trigger = {60, true};
  store_.setAuthorization(platform::AuthorizationStatus::authorized);
  ASSERT_TRUE(store_.schedule(repeating).ok());
  ASSERT_TRUE(advance(60));
  NotificationStore other(home_, "com.example.weather", clock_);
  ASSERT_TRUE(other.deliver(notification("other's")).ok());
  for (int i = 0; i < 254; ++i) ASSERT_TRUE(store_.deliver(notification(std::to_string(i))).ok());
  EXPECT_EQ(store_.delivered().size(), 256u);
  EXPECT_TRUE(fs::exists(picture));
  ASSERT_TRUE(store_.deliver(notification("254")).ok());
  EXPECT_EQ(store_.delivered().front().request.identifier, "repeating");
  EXPECT_FALSE(fs::exists(picture));
  auto later = notification("later");
  later.trigger = {1, false};
  ASSERT_TRUE(store_.schedule(later).ok());
  ASSERT_TRUE(advance(1));
  EXPECT_EQ(store_.delivered().size(), 256u);
  EXPECT_EQ(store_.delivered().front().request.identifier, "0");
  EXPECT_TRUE(fs::exists(store_.pending().at(0).request.content.attachments.at(0).path))
      << "its next time still needs it";
  EXPECT_EQ(other.delivered().size(), 1u);
}

TEST_F(NotificationStoreTest, LetsATapCrossAnotherOne) {
  const auto shown = *store_.deliver(withFile("a", "sun.png"));
  ASSERT_TRUE(store_.tappable("a"));
  store_.noteTapped("a");
  EXPECT_TRUE(store_.delivered().empty());
  EXPECT_FALSE(fs::exists(shown.content.attachments[0].path));
  ASSERT_TRUE(store_.tappable("a"));
  EXPECT_TRUE(store_.tappable("a")->content.attachments.empty());
  EXPECT_FALSE(store_.tappable("b"));
}

TEST_F(NotificationStoreTest, GivesEachResponseToOneTaker) {
  auto request = notification("a", "T");
  request.content.userInfo = platform::UserInfo::fromJSON(R"({"aps": 1})");
  ASSERT_TRUE(store_.deliver(request).ok());
  ASSERT_TRUE(store_.deliver(notification("b")).ok());
  EXPECT_FALSE(store_.keepResponse("unknown", "open").ok());
  for (const char* action : {"open", "reply", "open"})
    ASSERT_TRUE(store_.keepResponse("a", action, "hm").ok());
  ASSERT_TRUE(store_.keepResponse("b", "open").ok());
  ASSERT_TRUE(store_.keepResponse("b", "reply", "").ok());

  // The notification may go before its response is taken.
  store_.removeDelivered({"a"});
  NotificationStore other(home_, "com.example.news", clock_);
  EXPECT_TRUE(NotificationStore(home_, "com.example.weather", clock_).takeResponses().empty());
  const auto reply = other.takeResponse("b", "reply");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->text, "");
  EXPECT_FALSE(store_.takeResponse("b", "reply"));
  const auto rest = other.takeResponses();
  ASSERT_EQ(rest.size(), 3u);
  EXPECT_EQ(rest[0].response.actionIdentifier, "reply");
  EXPECT_EQ(rest[1].response.actionIdentifier, "open");
  EXPECT_EQ(rest[1].response.request.content.title, "T");
  EXPECT_EQ(*rest[1].response.request.content.userInfo.bytes(), R"({"aps": 1})");
  EXPECT_EQ(rest[1].text, "hm");
  EXPECT_EQ(rest[2].response.request.identifier, "b");
  EXPECT_EQ(rest[2].text, std::nullopt);
  EXPECT_TRUE(store_.takeResponses().empty());
  for (int i = 0; i < 150; ++i) ASSERT_TRUE(store_.keepResponse("b", std::to_string(i)).ok());
  EXPECT_EQ(store_.takeResponses().size(), 100u);
}

TEST_F(NotificationStoreTest, LosesNothingWhenProcessesWriteAtOnce) {
  constexpr int each = 40;
  const auto deliverMany = [&](const std::string& prefix) {
    NotificationStore store(home_, "com.example.news", clock_);
    for (int i = 0; i < each; ++i) {
      const auto identifier = prefix + std::to_string(i);
      if (!store.deliver(notification(identifier)).ok()) return false;
      store.changeCategories({}, {{identifier, {}, false}});
    }
    return true;
  };
  testing_support::ChildProcess one([&] { return deliverMany("one-"); });
  testing_support::ChildProcess two([&] { return deliverMany("two-"); });
  EXPECT_TRUE(one.succeeded());
  EXPECT_TRUE(two.succeeded());
  EXPECT_EQ(store_.delivered().size(), 2u * each);
  EXPECT_EQ(store_.categories().size(), 2u * each);
}

TEST_F(NotificationStoreTest, ForgetsTheOldestCategoriesThatWereForOneNotificationEach) {
  constexpr int many = 900;  // the file is written anew meanwhile
  const std::string title(100, 'x');
  store_.changeCategories({}, {{"news", {{.identifier = "read", .title = "Read"}}, false}});
  for (int i = 0; i < many; ++i)
    store_.changeCategories({}, {{std::to_string(i), {{.identifier = "a", .title = title}}, true}}, true);
  store_.changeCategories({}, {{"650", {}, true}}, true);  // the newest once more
  store_.changeCategories({}, {{"last", {}, true}}, true);
  NotificationStore another(home_, "com.example.news", clock_);
  EXPECT_EQ(another.categories(), store_.categories());
  EXPECT_EQ(another.categories().size(), 257u);
  EXPECT_EQ(another.actionsOf("news").size(), 1u);
  EXPECT_EQ(another.actionsOf("645").size(), 1u);
  EXPECT_TRUE(another.actionsOf("644").empty());
  EXPECT_TRUE(another.category("650").customDismissAction);
  const auto size = std::filesystem::file_size(home_ + "/com.example.news.categories");
  EXPECT_LT(size, 2u * 257 * 150);
}

TEST_F(NotificationStoreTest, GivesWhatIsDueToOneOfTwoProcesses) {
  constexpr int count = 40;
  {
    NotificationStore before(home_, "com.example.news", clock_);
    before.setAuthorization(platform::AuthorizationStatus::authorized);
    for (int i = 1; i <= count; ++i) {
      auto request = notification(std::to_string(i));
      request.trigger = {static_cast<double>(i), false};
      ASSERT_TRUE(before.schedule(request).ok());
    }
  }
  const auto takeAll = [&](const std::string& file) {
    std::ofstream taken(folder_ / file);
    NotificationStore store(home_, "com.example.news", clock_);
    for (int i = 0; i <= count; ++i) {
      const auto due = store.takeDue();
      if (!due) return false;
      for (const auto& held : *due) taken << held.request.identifier << '\n';
      clock_->advance(1);
    }
    return true;
  };
  testing_support::ChildProcess one([&] { return takeAll("one"); });
  testing_support::ChildProcess two([&] { return takeAll("two"); });
  EXPECT_TRUE(one.succeeded());
  EXPECT_TRUE(two.succeeded());
  std::multiset<std::string> shown;
  for (const char* file : {"one", "two"}) {
    std::ifstream lines(folder_ / file);
    for (std::string line; std::getline(lines, line);) shown.insert(line);
  }
  EXPECT_EQ(shown.size(), std::size_t{count});
  EXPECT_EQ(std::set<std::string>(shown.begin(), shown.end()).size(), std::size_t{count});
  EXPECT_EQ(*store_.nextDue(), std::nullopt);
}

TEST_F(NotificationStoreTest, RefusesTimesThatNeverComeOrComeWithoutEnd) {
  auto request = withFile("a", "sun.png");
  for (const auto& [seconds, repeats] : {std::pair{0.0, false},
                                         {-1.0, false},
                                         {std::numeric_limits<double>::infinity(), false},
                                         {std::numeric_limits<double>::quiet_NaN(), true},
                                         {59.9, true}}) {
    request.trigger = {seconds, repeats};
    EXPECT_FALSE(store_.schedule(request).ok()) << seconds;
  }
  EXPECT_TRUE(store_.pending().empty());
  EXPECT_TRUE(fs::exists(request.content.attachments[0].path));
  request.trigger = {0.5, false};
  EXPECT_TRUE(store_.schedule(request).ok());
}

TEST_F(NotificationStoreTest, KeepsFilesAsTheyWereWhenNothingCanBeStored) {
  const auto held = *store_.deliver(withFile("a", "sun.png"));
  EXPECT_EQ(fs::status(home_).permissions(), fs::perms::owner_all);
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
  const auto refused = store_.deliver(withFile("a", "moon.png"));
  ASSERT_FALSE(refused.ok());
  EXPECT_NE(refused.error().description.find("disk full"), std::string::npos);
  auto later = withFile("b", "rain.png");
  later.trigger = {60, true};
  EXPECT_FALSE(store_.schedule(later).ok());
  // The old notification stands, with the only file that is left.
  ASSERT_EQ(store_.delivered().size(), 1u);
  EXPECT_TRUE(fs::exists(held.content.attachments[0].path));
  EXPECT_EQ(std::distance(fs::directory_iterator(attachments_), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace VorselKelp::system
