#include "VorselKelpSystem/StoreWorker.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <thread>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/LockFile.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "VorselKelpSystem/RunningApplication.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

using Clock = posix::EventLoop::Clock;

struct Shower final : NotificationPresenter {
  void show(const platform::NotificationRequest& request, const platform::NotificationCategory& category,
            Shown shown) override {
    seen += request.identifier + "/" + std::to_string(category.actions.size()) + " ";
    shown(Done{});
  }
  void takeAway(const std::vector<std::string>& identifiers) override { seen += "-" + identifiers[0] + " "; }
  std::string seen;
};

/// The main thread of a process, while another one keeps the database locked.
class StoreWorkerTest : public testing::Test {
 protected:
  StoreWorkerTest() {
    store_->setAuthorization(platform::AuthorizationStatus::authorized);
    sqlite3* opened = nullptr;
    sqlite3_open((folder_ / "notifications.sqlite").c_str(), &opened);
    other_.reset(opened);
    sqlite3_busy_timeout(opened, 20'000);
    execute("BEGIN IMMEDIATE");
  }
  void execute(const char* sql) {
    ASSERT_EQ(sqlite3_exec(other_.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
  }
  bool run(const std::function<bool()>& finished) {
    return loop_->run(finished, Clock::now() + std::chrono::seconds(60));
  }

  testing_support::TemporaryFolder folder_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> other_{nullptr, &sqlite3_close};
  const std::shared_ptr<posix::EventLoop> loop_ = std::make_shared<posix::EventLoop>();
  const std::shared_ptr<NotificationStore> store_ =
      std::make_shared<NotificationStore>(folder_.path(), "com.example.news", posix::makeClock());
  const std::shared_ptr<StoreWorker> worker_ = std::make_shared<StoreWorker>(store_);
};

TEST_F(StoreWorkerTest, KeepsTheMainLoopGoingWhileTheStoreIsLocked) {
  const auto screen = std::make_shared<Shower>();
  const auto center = makeNotificationCenter({store_, loop_, nullptr, screen, nullptr, nullptr, worker_});
  const auto application = makeRunningApplication({store_, nullptr, nullptr, nullptr, nullptr, worker_});
  platform::NotificationRequest request;
  request.identifier = "first";
  request.content.categoryIdentifier = "buttons";
  center->setNotificationCategories({{"buttons", {{"a", "A"}}, false}});
  center->add(request);
  application->setBadge(5);
  std::thread::id answered;
  center->getNotificationSettings([&](const auto&) { answered = std::this_thread::get_id(); });
  std::optional<std::int64_t> badge;
  const auto readBadge = [&] {
    badge.reset();
    worker_->read(
        loop_, [](NotificationStore& store) { return store.badge(); },
        [&](std::int64_t number) { badge = number; });
  };
  readBadge();
  int rounds = 0;
  const std::function<void()> round = [&] {
    if (++rounds < 3) loop_->async(round);
  };
  loop_->async(round);
  EXPECT_TRUE(run([&] { return rounds == 3; }));
  EXPECT_EQ(screen->seen, "");
  EXPECT_FALSE(badge);
  EXPECT_FALSE(worker_->idle());

  execute("ROLLBACK");
  EXPECT_TRUE(run([&] { return badge && !screen->seen.empty(); }));
  EXPECT_EQ(badge, 5);
  EXPECT_EQ(answered, std::this_thread::get_id());
  EXPECT_EQ(screen->seen, "first/1 ");
  // What another process writes is seen.
  execute("UPDATE application SET badge = 7");
  center->removeDeliveredNotifications({"first"});
  readBadge();
  EXPECT_TRUE(run([&] { return badge.has_value(); }));
  EXPECT_EQ(badge, 7);
  EXPECT_EQ(screen->seen, "first/1 -first ");
}

TEST_F(StoreWorkerTest, EndsInTimeAndTellsWhatIsLost) {
  const auto center = makeNotificationCenter({store_, loop_, nullptr, nullptr, nullptr, nullptr, worker_});
  const auto lock = posix::lockFile(folder_ / "com.example.news.categories.lock");
  testing::internal::CaptureStderr();
  worker_->post([](NotificationStore& store) { store.setBadge(5); });
  center->removeDeliveredNotifications({"a"});
  center->setNotificationCategories({{"buttons", {}, false}});
  const auto start = Clock::now();
  worker_->end();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(9));
  worker_->post([](NotificationStore& store) { store.setBadge(6); });
  const auto locked =
      "Cannot use the notification database " + folder_ / "notifications.sqlite: database is locked\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The badge is not kept. " + locked + "No notification is removed. " + locked +
                "The buttons of the notifications are not kept. Cannot use the notification categories " +
                folder_ / "com.example.news.categories.lock: another process keeps it locked\n" +
                "The badge is not kept. " + locked);
}

}  // namespace
}  // namespace VorselKelp::system
