#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpSystem/StoreInspection.h"
#include "VorselKelpTesting/ManualClock.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

namespace fs = std::filesystem;

class NotificationDatabaseTest : public testing::Test {
 protected:
  [[nodiscard]] std::unique_ptr<NotificationStore> open() const {
    return std::make_unique<NotificationStore>(home_, "com.example.news", clock_);
  }
  void write(const std::string& bytes) const {
    fs::create_directories(home_);
    std::ofstream(database_, std::ios::binary) << bytes;
  }
  void execute(const char* sql) {
    if (!other_) {
      sqlite3* opened = nullptr;
      sqlite3_open(database_.c_str(), &opened);
      other_.reset(opened);
    }
    ASSERT_EQ(sqlite3_exec(other_.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
  }

  testing_support::TemporaryFolder folder_;
  const std::string home_ = folder_ / "home";
  const std::string database_ = home_ + "/notifications.sqlite";
  const std::shared_ptr<testing_platform::ManualClock> clock_ =
      std::make_shared<testing_platform::ManualClock>();
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> other_{nullptr, &sqlite3_close};
};

TEST_F(NotificationDatabaseTest, SaysWhyItIsOfNoUse) {
  std::ofstream(folder_ / "file") << "x";
  EXPECT_FALSE(NotificationStore(folder_ / "file", "a", clock_).open());
  fs::create_directories(database_);
  const auto folder = open()->open();
  ASSERT_FALSE(folder);
  EXPECT_NE(folder.error().description.find(database_), std::string::npos);
  fs::remove(database_);
  open()->setBadge(1);
  execute("PRAGMA user_version = 4");
  const auto newer = open()->open();
  ASSERT_FALSE(newer);
  EXPECT_NE(newer.error().description.find("another version"), std::string::npos);
}

TEST_F(NotificationDatabaseTest, TakesOverWhatTheVersionBeforeWrote) {
  fs::create_directories(home_);
  execute(R"(
CREATE TABLE device(name TEXT PRIMARY KEY, value) WITHOUT ROWID;
CREATE TABLE application(identifier TEXT PRIMARY KEY, authorization INTEGER NOT NULL DEFAULT 0,
                         registered INTEGER NOT NULL DEFAULT 0, token BLOB, badge INTEGER NOT NULL DEFAULT 0)
  WITHOUT ROWID;
CREATE TABLE notification(serial INTEGER PRIMARY KEY, application TEXT NOT NULL, identifier TEXT NOT NULL,
                          state INTEGER NOT NULL, due REAL NOT NULL, seconds REAL, repeats INTEGER,
                          content TEXT NOT NULL, userInfo BLOB NOT NULL, infoIsBytes INTEGER NOT NULL);
CREATE UNIQUE INDEX notificationByName ON notification(application, identifier, state);
CREATE INDEX notificationByTime ON notification(application, state, due);
PRAGMA user_version = 2;
INSERT INTO device VALUES('clock', 7);
INSERT INTO application VALUES('com.example.news', 2, 1, x'00ff', 4);
INSERT INTO notification VALUES(5, 'com.example.news', 'shown', 1, 10, NULL, NULL,
                                '{"title":"Shown","attachments":[]}', '{"a":1}', 1);
INSERT INTO notification VALUES(6, 'com.example.news', 'later', 0, 1e12, 60, 1, '{"title":"Later"}', '{}', 0);
)");
  EXPECT_NE(inspectNotificationStore(home_, "com.example.news").problem, "");
  EXPECT_EQ(open()->badge(), 4);
  EXPECT_EQ(inspectNotificationStore(home_, "com.example.news").problem, "");
  const auto store = open();
  EXPECT_EQ(store->authorization(), platform::AuthorizationStatus::authorized);
  const auto delivered = store->delivered();
  ASSERT_EQ(delivered.size(), 1u);
  EXPECT_EQ(delivered[0].request.content.title, "Shown");
  EXPECT_EQ(*delivered[0].request.content.userInfo.bytes(), R"({"a":1})");
  const auto pending = store->pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_TRUE(pending[0].request.trigger && pending[0].request.trigger->repeats);
  EXPECT_TRUE(store->takeDue()->empty()) << "it was shown before";
  EXPECT_TRUE(store->keepResponse("shown", "a"));
  EXPECT_EQ(store->takeResponses().size(), 1u);
  platform::NotificationRequest request;
  request.identifier = "new";
  EXPECT_TRUE(store->deliver(request));
}

TEST_F(NotificationDatabaseTest, GivesWayToAnEmptyOneWhenItIsDamaged) {
  const std::string garbage(5000, 'x');
  write(garbage);
  EXPECT_NE(inspectNotificationStore(home_, "a").problem, "");
  EXPECT_FALSE(fs::exists(database_ + ".damaged")) << "who only looks changes nothing";
  testing::internal::CaptureStderr();
  const auto one = open();
  const auto two = open();
  one->setBadge(3);
  EXPECT_EQ(two->badge(), 3);
  EXPECT_EQ(fs::file_size(database_ + ".damaged"), garbage.size());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The notification database " + database_ + " is damaged (file is not a database); it is now " +
                database_ + ".damaged, and an empty one takes its place\n");

  // Damage that is found at work: what was to be written is lost, and whoever comes next has an empty one.
  for (int i = 0; i < 40; ++i) {
    platform::NotificationRequest request;
    request.identifier = std::to_string(i);
    request.content.body = std::string(500, 'b');
    ASSERT_TRUE(one->deliver(request));
  }
  execute("PRAGMA wal_checkpoint(TRUNCATE)");
  other_.reset();
  {
    std::fstream file(database_, std::ios::binary | std::ios::in | std::ios::out);
    for (std::size_t page = 1; page < fs::file_size(database_) / 4096; ++page) {
      file.seekp(static_cast<std::streamoff>(page * 4096));
      file << std::string(4096, 'x');
    }
  }
  testing::internal::CaptureStderr();
  EXPECT_TRUE(open()->delivered().empty());
  auto fresh = open();
  fresh->setBadge(1);
  fresh->setBadge(5);
  EXPECT_EQ(two->badge(), 5) << "other processes follow";
  const auto lines = testing::internal::GetCapturedStderr();
  EXPECT_EQ(lines.find("The notifications are not known"), 0u) << lines;
  EXPECT_NE(lines.find("is damaged (database disk image is malformed)"), std::string::npos) << lines;
}

TEST_F(NotificationDatabaseTest, ReadsWhileAnotherProcessWrites) {
  open()->setBadge(3);
  execute("BEGIN EXCLUSIVE; UPDATE application SET badge = 4");
  const auto store = open();
  EXPECT_EQ(store->badge(), 3);
  execute("COMMIT");
  EXPECT_EQ(store->badge(), 4);
  // The log stays when a process ends, and does not grow for ever.
  for (int i = 0; i < 100; ++i) open()->setBadge(i);
  EXPECT_EQ(open()->badge(), 99);
  EXPECT_LT(fs::file_size(database_ + "-wal"), 100u * 4096);
}

}  // namespace
}  // namespace VorselKelp::system
