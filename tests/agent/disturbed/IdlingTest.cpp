#include <sqlite3.h>

#include <algorithm>
#include <set>

#include "agent/disturbed/Disturbance.h"

namespace VorselKelp::agent {
namespace {

using freedesktop::NotificationServer;

class IdlingTest : public AgentTest {
 protected:
  IdlingTest() {
    desk = &startDistributor("desk");
    subscribe();
    waitUntilRunning(false);
  }

  distributor::Distributor* desk = nullptr;
};

/// Each agent leaves as soon as it has nothing to do; the next message is sent at one of the moments until
/// its end and after it.
TEST_F(IdlingTest, ShowsWhatComesWhileItLeaves) {
  NotificationServer server(address);
  server.abilities = {"body"};
  start({}, "0");
  const int count = thorough() ? 3000 : 40;
  Row row("messages at the moment of idling");
  constexpr int moments = 40;
  constexpr gint64 apart = 300;  // microseconds
  for (int sent = 0; sent < count; ++sent) {
    if (sent % 7 == 0) row.hits += running() ? 0 : 1;
    send(*desk, payload(std::to_string(sent)));
    waitUntil([&] { return server.shown.size() > static_cast<std::size_t>(sent); });
    g_main_context_iteration(nullptr, TRUE);  // it has heard the number
    server.close(server.shown.back().number, 2);
    const auto moment = g_get_monotonic_time() + sent % moments * apart;
    while (g_get_monotonic_time() < moment) g_main_context_iteration(nullptr, FALSE);
    ++row.rounds;
  }
  std::set<std::string> distinct;
  for (const auto& shown : server.shown) distinct.insert(shown.title);
  row.faults = count - static_cast<int>(distinct.size()) + refused;
  EXPECT_EQ(distinct.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(server.shown.size(), distinct.size());
  EXPECT_EQ(refused, 0);
  EXPECT_GT(row.hits, 0) << "no agent has left";
}

TEST_F(IdlingTest, RefusesAfterTwentySecondsWhatItCannotWrite) {
  if (!thorough()) GTEST_SKIP() << "takes twenty seconds";
  NotificationServer server(address);
  send(*desk, payload("first"));
  waitUntil([&] { return server.shown.size() == 1 && acknowledged == 1 && numbersKept() == 1; });
  Row row("a message that can't be written for 20 seconds");
  const auto folder =
      system::foldersOf(*system::parseDescription(R"({"bundleIdentifier":"com.example.app"})"));
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((folder.data + "/push/agent.sqlite").c_str(), &other), SQLITE_OK);
  sqlite3_busy_timeout(other, 5000);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  const auto start = g_get_monotonic_time();
  const auto seconds = [&] { return (g_get_monotonic_time() - start) / G_USEC_PER_SEC; };
  send(*desk, payload("second"));
  const auto ticks = g_timeout_add(
      100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  waitUntil([&] { return seconds() >= 15; });
  EXPECT_EQ(acknowledged + refused, 1);
  waitUntil([&] { return refused == 1; });
  g_source_remove(ticks);
  EXPECT_GE(seconds(), 20);
  sqlite3_close(other);
  send(*desk, payload("second"));
  waitUntil([&] { return server.shown.size() == 2; });
  EXPECT_EQ(acknowledged, 2);
  row.rounds = 1;
}

}  // namespace
}  // namespace VorselKelp::agent
