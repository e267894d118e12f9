#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "VorselKelpWebPush/Message.h"
#include "agent/disturbed/Disturbance.h"
#include "agent/disturbed/PowerCut.h"
#include "state/State.h"

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;
using freedesktop::NotificationServer;

class PowerTest : public AgentTest {
 protected:
  ~PowerTest() override { fs::remove_all(states); }

  void subscribeAndLeave();
  /// Messages through an agent whose calls are recorded; notes how far the record was when each was
  /// acknowledged, and when it was shown.
  void record(int count);
  void tryStates(PowerCut& cut, std::uintmax_t now, unsigned samples, Row& row);
  void check(std::uintmax_t now);

  [[nodiscard]] std::uintmax_t recorded() const { return fs::file_size(file("record")); }

  distributor::Distributor* desk = nullptr;
  std::string folder = file("data/com.example.app/vorselkelp/push");
  /// In memory, where opening thousands of them waits for no disk.
  const std::string states = "/dev/shm/" + fs::path(path).filename().string();
  std::map<std::string, std::uintmax_t> acknowledgedAt;
  std::map<std::string, std::uintmax_t> shownAt;
};

void PowerTest::subscribeAndLeave() {
  desk = &startDistributor("desk");
  subscribe();
  waitUntilRunning(false);
  ASSERT_TRUE(State::open(folder));  // waits until the agent has closed it
}

void PowerTest::record(int count) {
  start(std::string(INJECTOR) + " --under " + path + " --process vorsel-push-age --report " + file("report"),
        "0.2");
  std::ofstream(file("disturbance")) << "--record " << file("record");
  NotificationServer server(address);
  server.holds = true;
  std::size_t seen = 0;
  for (int i = 0; i < count; ++i) {
    const auto title = std::to_string(i);
    const auto sent =
        desk->send(desk->registrations().begin()->first, *webpush::encrypt(payload(title), *subscription),
                   title, [this, title](const Status& status) {
                     if (status) acknowledgedAt[title] = recorded();
                   });
    ASSERT_TRUE(sent);
    const bool waits = i % 3 == 2 || i + 1 == count;  // else the next comes meanwhile
    if (!waits) continue;
    waitUntil([&] {
      for (; seen < server.shown.size(); ++seen) shownAt[server.shown[seen].title] = recorded();
      server.release();
      return acknowledgedAt.size() == static_cast<std::size_t>(i + 1) && seen == acknowledgedAt.size();
    });
  }
  for (const auto& shown : server.shown) server.close(shown.number, 2);
  waitUntil([&] { return fs::exists(file("report")) && fs::file_size(file("report")) > 0; });
}

void PowerTest::tryStates(PowerCut& cut, std::uintmax_t now, unsigned samples, Row& row) {
  for (unsigned state = 0; state < cut.states(samples) && !HasFailure(); ++state) {
    cut.put(state, states);
    ++row.rounds;
    check(now);
  }
}

void PowerTest::check(std::uintmax_t now) {
  auto state = State::open(states);
  ASSERT_TRUE(state) << state.error().description;
  const auto keys = *(*state)->keys(0);
  ASSERT_FALSE(keys.empty());
  std::set<std::string> spooled;
  const auto waiting = *(*state)->waiting();
  for (const auto serial : waiting) {
    const auto text = webpush::decrypt((*(*state)->message(serial))->bytes, keys.front());
    ASSERT_TRUE(text);
    spooled.insert(*text);
  }
  for (const auto& [title, when] : acknowledgedAt) {
    const bool promised = when <= now && shownAt.at(title) > now;
    EXPECT_TRUE(!promised || spooled.contains(payload(title))) << title << " is lost";
  }
}

TEST_F(PowerTest, KeepsWhatWasAcknowledgedThroughAPowerCutAtAnyMoment) {
  if (!Disturbance::permitted()) GTEST_SKIP() << "this system does not let a process decide about calls";
  subscribeAndLeave();
  PowerCut cut(folder);
  record(thorough() ? 60 : 9);
  Row row("power cut: the push agent's state");
  const int every = thorough() ? 1 : 8;
  int number = 0;
  for (const auto& call : readCalls(file("record"))) {
    EXPECT_TRUE(cut.apply(call)) << call.effect;
    if (++number % every == 0) tryStates(cut, call.end, thorough() ? 16 : 8, row);
    if (HasFailure()) ++row.faults;
    ASSERT_FALSE(HasFailure()) << "after call " << number << ", " << call.effect << " " << call.path;
  }
  row.hits = number;
  EXPECT_GT(number, 20);
}

}  // namespace
}  // namespace VorselKelp::agent
