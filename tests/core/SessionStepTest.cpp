#include "core/SessionStep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/TestCore.h"
#include "facade/WatchedDefaults.h"

namespace VorselKelp {
namespace {

void countSession(const TestCore& core) {
  runSessionStep(*core.context, [] {});
}

/// Goes on by a second whenever it is read, and looks whether anything was asked of the store before.
class LookingClock final : public platform::Clock {
 public:
  explicit LookingClock(std::shared_ptr<BrellixPush::WatchedDomain> store) : store_(std::move(store)) {}
  double now() override {
    EXPECT_EQ(store_->reads + store_->others, 0) << "a transaction waits for no clock";
    return ++now_;
  }
  std::shared_ptr<platform::Semaphore> makeSemaphore() override { return nullptr; }

 private:
  const std::shared_ptr<BrellixPush::WatchedDomain> store_;
  double now_ = 100;
};

TEST(SessionStep, ReadsTheClockTwiceBeforeItTouchesTheStore) {
  TestCore core;
  const auto defaults = std::make_shared<BrellixPush::WatchedDefaults>(core.app.userDefaults);
  core.app.platform()->userDefaults = defaults;
  core.app.platform()->clock = std::make_shared<LookingClock>(defaults->watched);
  countSession(core);
  EXPECT_EQ(core.text("vs_session_id"), "101");
  EXPECT_EQ(core.text("vs_uniq_session_first_time"), "102");
}

TEST(SessionStep, CountsSessionsAndNamesTheInstallationOnce) {
  TestCore core;
  core.app.device->clock->setNow(1763173483.75);
  core.app.standardDomain->setObject("vs_visitedPCount", {std::int64_t{9}});
  countSession(core);
  EXPECT_EQ(core.integer("vs_session_num"), 1);
  EXPECT_EQ(core.text("vs_session_id"), "1763173483");
  EXPECT_EQ(core.integer("vs_visitedPCount"), 0);
  EXPECT_EQ(core.text("vs_uniq_session_first_time"), "1763173483");
  const auto unique = core.text("vs_uniq_session_id");
  EXPECT_THAT(unique.value_or(""), testing::MatchesRegex("1763173483\\.[0-9]{10}"));

  core.app.device->clock->setNow(1763173999);
  countSession(core);
  EXPECT_EQ(core.integer("vs_session_num"), 2);
  EXPECT_EQ(core.text("vs_session_id"), "1763173999");
  EXPECT_EQ(core.text("vs_uniq_session_first_time"), "1763173483");
  EXPECT_EQ(core.text("vs_uniq_session_id"), unique);
}

/// Gives the highest number that is asked for.
struct HighestRandom final : platform::Random {
  std::uint32_t below(std::uint32_t bound) override { return bound - 1; }
};

TEST(SessionStep, AnIdMayHoldEveryDigit) {
  TestCore core;
  core.app.platform()->random = std::make_shared<HighestRandom>();
  countSession(core);
  EXPECT_THAT(core.text("vs_uniq_session_id").value_or(""), testing::EndsWith(".9999999999"));
}

TEST(SessionStep, InstallationsGetDifferentIds) {
  TestCore first;
  TestCore second;
  first.app.random->below(10);
  countSession(first);
  countSession(second);
  EXPECT_NE(first.text("vs_uniq_session_id"), second.text("vs_uniq_session_id"));
}

TEST(SessionStep, StopsOnABrokenClockOrCounterAndNotOnAMissingStore) {
  TestCore core;
  core.app.standardDomain->setObject("vs_session_num", {std::numeric_limits<std::int64_t>::max()});
  EXPECT_DEATH(countSession(core), "Fatal error: ");
  core.app.standardDomain->removeObject("vs_session_num");
  core.app.device->clock->setNow(std::nan(""));
  EXPECT_DEATH(countSession(core), "Fatal error: ");
  TestCore storeless;
  storeless.app.device->groupStores->refuse("");
  countSession(storeless);
  ASSERT_TRUE(readSessionValues(*storeless.context)) << "counted all the same";
  EXPECT_EQ(readSessionValues(*storeless.context)->number, 1);
}

TEST(SessionValues, AreThereTogetherOrNotAtAll) {
  for (const char* key : {"vs_session_num", "vs_session_id", "vs_visitedPCount", "vs_uniq_session_id"}) {
    TestCore core;
    countSession(core);
    ASSERT_TRUE(readSessionValues(*core.context));
    core.app.standardDomain->setObject(key, {true});
    EXPECT_FALSE(readSessionValues(*core.context)) << key;
    core.app.standardDomain->removeObject(key);
    EXPECT_FALSE(readSessionValues(*core.context)) << key;
  }
}

}  // namespace
}  // namespace VorselKelp
