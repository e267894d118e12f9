#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>

#include "VorselKelpSystem/NotificationRecords.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpTesting/ManualClock.h"
#include "agent/disturbed/Disturbance.h"
#include "agent/disturbed/PowerCut.h"
#include "agent/disturbed/RoadPicture.h"

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;
using system::NotificationStore;

/// A store of notifications, in memory, where opening thousands of them waits for no disk. What it keeps says
/// where its files lie, so that each state is put where the recorded one was.
class StorePowerTest : public testing::Test {
 protected:
  StorePowerTest() { fs::create_directories(home); }
  ~StorePowerTest() override { fs::remove_all(folder); }

  /// What a store held, in the order of the moments, each once.
  struct History {
    std::vector<std::string> moments;
    std::size_t safe = 0;  ///< from which moment on it can't be lost

    void note(std::string moment) {
      if (moments.empty() || moments.back() != moment) moments.push_back(std::move(moment));
    }
    [[nodiscard]] bool holds(const std::string& found) const {
      return std::find(moments.begin() + static_cast<std::ptrdiff_t>(safe), moments.end(), found) !=
             moments.end();
    }
  };

  [[nodiscard]] NotificationStore open() const { return {home + "/store", "app", clock}; }
  void note(const PowerCut& cut);
  void check();
  void goOn();

  const std::string folder = "/dev/shm/vorsel-power-" + std::to_string(::getpid());
  const std::string home = folder + "/home";
  const std::shared_ptr<testing_platform::ManualClock> clock =
      std::make_shared<testing_platform::ManualClock>(0);
  History notifications;
  History categories;
  std::size_t pictures = 0;  ///< that were found
};

std::string describe(const std::vector<system::HeldNotification>& all) {
  std::string text;
  for (const auto& held : all) {
    auto content = held.request.content;
    content.attachments.clear();
    text += held.request.identifier + " " + std::to_string(held.due) +
            system::encodeLossy(system::encodeContent(content));
  }
  return text;
}

/// Takes the responses.
std::string describe(NotificationStore& store) {
  auto text = std::to_string(store.badge()) + system::authorizationWord(store.authorization()) + "; ";
  text += describe(store.delivered()) + "; " + describe(store.pending()) + "; ";
  for (const auto& kept : store.takeResponses())
    text += kept.response.request.identifier + kept.response.actionIdentifier + kept.text.value_or("-");
  return text;
}

std::string describeCategories(NotificationStore& store) {
  std::string text;
  for (const auto& each : store.categories())
    text += each.identifier + system::encodeLossy(system::encodeActions(each.actions));
  return text;
}

/// What stands there now for who loses nothing.
void StorePowerTest::note(const PowerCut& cut) {
  cut.putAll(home);
  auto store = open();
  notifications.note(describe(store));
  categories.note(describeCategories(store));
  const auto database = home + "/store/notifications.sqlite";
  if (fs::exists(database) && cut.isSafe(database)) notifications.safe = notifications.moments.size() - 1;
}

void StorePowerTest::check() {
  testing::internal::CaptureStderr();
  {
    auto store = open();
    for (const auto& all : {store.delivered(), store.pending()}) {
      for (const auto& held : all) {
        for (const auto& file : held.request.content.attachments) {
          const auto name = fs::path(file.path).filename().string();
          EXPECT_EQ(contentOf(file.path), testing_support::roadPicture(name)) << file.path;
          ++pictures;
        }
      }
    }
    EXPECT_TRUE(notifications.holds(describe(store))) << describe(store);
    EXPECT_TRUE(categories.holds(describeCategories(store))) << describeCategories(store);
  }
  goOn();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_FALSE(fs::exists(home + "/store/notifications.sqlite.damaged"));
}

/// More can be kept, and what is nobody's is cleaned up.
void StorePowerTest::goOn() {
  const auto attachments = home + "/store/attachments";
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(attachments, error))
    fs::last_write_time(entry, fs::file_time_type::clock::now() - std::chrono::hours(2));
  const auto picture = home + "/passing/new/new.png";
  fs::create_directories(home + "/passing/new");
  std::ofstream(picture) << testing_support::roadPicture("new.png");
  platform::NotificationRequest request;
  request.identifier = "new";
  request.content.attachments.push_back({"image", picture});
  {
    auto store = open();
    store.changeCategories({}, {{"new", {{"a", "A", {}}}, false}}, true);
    EXPECT_TRUE(store.deliver(request));
  }
  auto store = open();
  EXPECT_EQ(store.category("new").actions.size(), 1U);
  std::set<std::string> used;  // a repeating notification shares its own with those that came of it
  for (const auto& all : {store.delivered(), store.pending()}) {
    for (const auto& held : all) {
      for (const auto& file : held.request.content.attachments) used.insert(file.path);
    }
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(attachments), {}), static_cast<std::ptrdiff_t>(used.size()));
}

TEST_F(StorePowerTest, KeepsWholeNotificationsThroughAPowerCutAtAnyMoment) {
  if (!Disturbance::permitted()) GTEST_SKIP() << "this system does not let a process decide about calls";
  PowerCut cut(home);
  const auto record = folder + "/record";
  const auto command = std::string(INJECTOR) + " --under " + home + " --record " + record + " -- " +
                       STORE_ROAD + " " + home + (thorough() ? " 12" : " 2");
  ASSERT_EQ(std::system(command.c_str()), 0);
  Row row("power cut: the notifications");
  const int every = thorough() ? 1 : 16;
  note(cut);
  for (const auto& call : readCalls(record)) {
    EXPECT_TRUE(cut.apply(call)) << call.effect;
    note(cut);
    ++row.hits;
    if (row.hits % every != 0) continue;
    for (unsigned state = 0; state < cut.states(thorough() ? 12 : 4) && !HasFailure(); ++state) {
      cut.put(state, home);
      ++row.rounds;
      check();
    }
    if (HasFailure()) ++row.faults;
    ASSERT_FALSE(HasFailure()) << "after call " << row.hits << ", " << call.effect << " " << call.path;
  }
  EXPECT_GT(pictures, static_cast<std::size_t>(row.rounds)) << "hardly any picture was left";
  EXPECT_GT(notifications.moments.size(), 20U);
}

}  // namespace
}  // namespace VorselKelp::agent
