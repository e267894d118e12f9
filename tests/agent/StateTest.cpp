#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "VorselKelpFreedesktop/MainQueue.h"
#include "agent/AgentTest.h"
#include "bus/Text.h"
#include "state/StateThread.h"

namespace VorselKelp::agent {
namespace {

constexpr double day = 24 * 3600;

struct StateTest : testing::Test {
  StateTest() {
    std::string name = std::filesystem::temp_directory_path() / "vorsel-state-XXXXXX";
    folder = ::mkdtemp(name.data());
  }
  ~StateTest() override { std::filesystem::remove_all(folder); }
  std::string folder;
};

TEST_F(StateTest, KeepsWhatItTookAndKnowsWhatCameWithinADay) {
  {
    auto state = *State::open(folder + "/push");
    const auto serials = *state->keep({{"a", "1"}, {"b", std::string("\0\xff", 2)}, {"a", "1"}}, 1000);
    ASSERT_EQ(serials.size(), 3U);
    EXPECT_TRUE(serials[0] && serials[1] && !serials[2]);
    ASSERT_TRUE(state->apply({{*serials[0]}, {{"n", 7, "desk"}, {"m", 8, "desk"}, {"n", 0, {}}}}));
  }
  auto state = *State::open(folder + "/push");
  const auto waiting = *state->waiting();
  ASSERT_EQ(waiting.size(), 1U);
  EXPECT_EQ((*state->message(waiting[0]))->bytes, std::string("\0\xff", 2));
  EXPECT_FALSE((*state->keep({{"a", "1"}}, 1000 + day - 1))[0]);
  EXPECT_TRUE((*state->keep({{"a", "1"}}, 1000 + day + 1))[0]);
  EXPECT_EQ(state->shown("desk")->size(), 1U);
  EXPECT_TRUE(state->shown("another desk")->empty());
  const auto rights = std::filesystem::status(folder + "/push/agent.sqlite").permissions();
  EXPECT_EQ(rights, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(StateTest, TakesOverWhatTheVersionBeforeWrote) {
  sqlite3* before = nullptr;
  ASSERT_EQ(sqlite3_open((folder + "/agent.sqlite").c_str(), &before), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(before, R"(
PRAGMA journal_mode = WAL;
CREATE TABLE setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE keys(serial INTEGER PRIMARY KEY, private BLOB NOT NULL, public BLOB NOT NULL, auth BLOB NOT NULL,
                  replaced REAL);
CREATE TABLE spool(serial INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL, message BLOB NOT NULL);
CREATE TABLE seen(identifier TEXT PRIMARY KEY, time REAL NOT NULL) WITHOUT ROWID;
CREATE INDEX seenByTime ON seen(time);
PRAGMA user_version = 1;
INSERT INTO setting VALUES('token', 't');
INSERT INTO keys VALUES(1, 'p', 'q', 'a', NULL);
INSERT INTO spool VALUES(3, 'b', 'waits');
INSERT INTO seen VALUES('a', 1000), ('b', 1000);
)",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(before);
  const auto state = *State::open(folder);
  EXPECT_EQ(*state->setting("token"), "t");
  EXPECT_EQ(state->keys(1000)->at(0).publicKey, "q");
  EXPECT_EQ(*state->waiting(), std::vector<std::int64_t>{3});
  EXPECT_EQ((*state->message(3))->bytes, "waits");
  EXPECT_FALSE((*state->keep({{"a", "1"}}, 1001))[0]);
  ASSERT_TRUE(state->apply({{3}, {{"n", 7, "desk"}}}));
  EXPECT_EQ(state->shown("desk")->size(), 1U);
}

TEST_F(StateTest, WritesLaterWhatTheDiskRefused) {
  const auto queue = freedesktop::makeMainQueue();
  const auto waitFor = [](const bool& done) {
    while (!done) g_main_context_iteration(nullptr, TRUE);
  };
  {
    StateThread thread(queue);
    Result<std::optional<std::int64_t>> kept = Error{""};
    const auto keep = [&](const char* name) {
      bool done = false;
      thread.keep({name, "1"}, 1000, [&](auto serial) {
        kept = std::move(serial);
        done = true;
      });
      waitFor(done);
    };
    bool opened = false;
    thread.open(folder, [&](const Status&) { opened = true; });
    waitFor(opened);
    keep("a");
    ASSERT_TRUE(kept && *kept);
    const auto first = **kept;

    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{1, limit.rlim_max};
    const auto before = ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    thread.drop(first);
    keep("b");
    ::setrlimit(RLIMIT_FSIZE, &limit);
    ::signal(SIGXFSZ, before);
    EXPECT_FALSE(kept);
  }
  EXPECT_TRUE((*State::open(folder))->waiting()->empty());
}

TEST_F(StateTest, KeepsTheKeysBeforeForAWeek) {
  auto state = *State::open(folder);
  ASSERT_TRUE(state->addKeys({"p1", "q1", "a1"}, 0));
  ASSERT_TRUE(state->addKeys({"p2", "q2", "a2"}, 100));
  ASSERT_EQ(state->keys(100 + 7 * day - 1)->size(), 2U);
  const auto later = *state->keys(100 + 7 * day + 1);
  ASSERT_EQ(later.size(), 1U);
  EXPECT_EQ(later[0].privateKey, "p2");
}

class NewerStateTest : public AgentTest {
 protected:
  void execute(const char* sql) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(written.c_str(), &database), SQLITE_OK);
    // An agent that has just gone from the bus may have its files open still.
    waitUntil([&] { return sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK; });
    sqlite3_close(database);
  }
  [[nodiscard]] std::string bytes() const {
    std::ostringstream text;
    text << std::ifstream(written, std::ios::binary).rdbuf();
    return text.str();
  }

  const std::string written =
      system::foldersOf(*system::parseDescription(R"({"bundleIdentifier":"com.example.app"})")).data +
      "/push/agent.sqlite";
};

TEST_F(NewerStateTest, StaysAsItIsAndTakesNoMessages) {
  auto& desk = startDistributor("desk");
  subscribe();
  killAgent();
  execute("PRAGMA journal_mode = DELETE; PRAGMA user_version = 3");
  const auto before = bytes();
  send(desk, payload("one"));
  waitUntil([&] { return refused == 1; });
  waitUntilRunning(false);
  EXPECT_EQ(bytes(), before);
  EXPECT_THAT(lines(),
              testing::HasSubstr(written + ": a newer version wrote it; install that version again"));
  execute("PRAGMA user_version = 2");
  send(desk, payload("one"));
  waitUntil([&] { return acknowledged == 1; });
}

TEST(TextTest, IsCutBetweenCharacters) {
  EXPECT_EQ(shortText("a\xc3\xa4", 3), "a\xc3\xa4");
  EXPECT_EQ(shortText("a\xc3\xa4", 2), "a");
  EXPECT_EQ(shortText("a\xc3", 9), "a\xef\xbf\xbd");
  EXPECT_EQ(shortText("a\xc3", 3), "a");
}

}  // namespace
}  // namespace VorselKelp::agent
