#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "VorselKelpWebPush/Message.h"
#include "agent/disturbed/Disturbance.h"
#include "state/State.h"

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;
using freedesktop::NotificationServer;

/// A file as a disk may have it: what was synchronized, and changes since, each of which may be missing.
struct DiskFile {
  struct Change {
    std::size_t offset;
    std::optional<std::string> bytes;  ///< absent: the file ends here
  };

  static void apply(std::string& content, const Change& change) {
    const auto end = change.offset + (change.bytes ? change.bytes->size() : 0);
    if (!change.bytes || content.size() < end) content.resize(end, '\0');
    if (change.bytes) content.replace(change.offset, change.bytes->size(), *change.bytes);
  }

  void synchronize() {
    for (const auto& change : std::exchange(changes, {})) apply(content, change);
  }

  std::string content;
  std::vector<Change> changes;
};

struct RecordedCall {
  std::string name;
  std::size_t offset = 0;
  std::size_t size = 0;
  std::string path;
  std::string bytes;
  std::uintmax_t end = 0;  ///< of its record, in the records' file
};

std::string contentOf(const fs::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

std::vector<RecordedCall> readCalls(const std::string& path) {
  std::vector<RecordedCall> calls;
  std::ifstream stream(path, std::ios::binary);
  for (RecordedCall call; stream >> call.name >> call.offset >> call.size >> call.path;) {
    stream.get();
    call.bytes.resize(call.size);
    stream.read(call.bytes.data(), static_cast<std::streamsize>(call.size));
    stream.get();
    call.end = static_cast<std::uintmax_t>(stream.tellg());
    calls.push_back(call);
  }
  return calls;
}

class PowerTest : public AgentTest {
 protected:
  ~PowerTest() override { fs::remove_all(states); }

  /// Messages through an agent whose calls are recorded; notes how far the record was when each was
  /// acknowledged, and when it was shown.
  void record(int count);
  void change(const RecordedCall& call);
  void tryStates(std::uintmax_t now, int samples, Row& row);
  void check(std::uintmax_t now);

  [[nodiscard]] std::uintmax_t recorded() const { return fs::file_size(file("record")); }

  std::string folder = file("data/com.example.app/vorselkelp/push");
  /// In memory, where opening thousands of them waits for no disk.
  const std::string states = "/dev/shm/" + fs::path(path).filename().string();
  std::map<std::string, std::uintmax_t> acknowledgedAt;
  std::map<std::string, std::uintmax_t> shownAt;
  std::map<std::string, DiskFile> disk;  ///< by path
  std::mt19937 random{7};
};

void PowerTest::record(int count) {
  auto& desk = startDistributor("desk");
  subscribe();
  waitUntilRunning(false);
  ASSERT_TRUE(State::open(folder));  // waits until the agent has closed it
  for (const auto& entry : fs::directory_iterator(folder))
    disk[entry.path().string()].content = contentOf(entry.path());
  start(std::string(INJECTOR) + " --under " + path + " --process vorsel-push-age --report " + file("report"),
        "0.2");
  std::ofstream(file("disturbance")) << "--record " << file("record");
  NotificationServer server(address);
  server.holds = true;
  std::size_t seen = 0;
  for (int i = 0; i < count; ++i) {
    const auto title = std::to_string(i);
    const auto sent =
        desk.send(desk.registrations().begin()->first, *webpush::encrypt(payload(title), *subscription),
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

void PowerTest::change(const RecordedCall& call) {
  // What maps the log is made anew from it.
  if (!call.path.starts_with(folder + "/") || call.path.ends_with("-shm")) return;
  auto& changed = disk[call.path];
  if (call.name == "pwrite64") {
    changed.changes.push_back({call.offset, call.bytes});
  } else if (call.name == "ftruncate") {
    changed.changes.push_back({call.offset, std::nullopt});
  } else if (call.name.ends_with("sync")) {
    changed.synchronize();
  } else if (call.name == "unlink") {
    disk.erase(call.path);
  }
}

/// All combinations of what is lost and kept where they are few.
void PowerTest::tryStates(std::uintmax_t now, int samples, Row& row) {
  std::size_t open = 0;
  for (const auto& [name, each] : disk) open += each.changes.size();
  const bool all = open < 6;
  for (int sample = 0; sample < (all ? 1 << open : samples) && !HasFailure(); ++sample) {
    fs::remove_all(states);
    fs::create_directory(states);
    auto kept = static_cast<unsigned>(sample);
    for (const auto& [name, each] : disk) {
      auto content = each.content;
      for (const auto& made : each.changes) {
        if (all ? kept & 1 : random() & 1) DiskFile::apply(content, made);
        kept >>= 1;
      }
      std::ofstream(states + name.substr(folder.size()), std::ios::binary) << content;
    }
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
  record(thorough() ? 60 : 9);
  const auto calls = readCalls(file("record"));
  Row row("power cut: the push agent's state");
  const int every = thorough() ? 1 : 8;
  int number = 0;
  for (const auto& call : calls) {
    change(call);
    if (++number % every == 0) tryStates(call.end, thorough() ? 16 : 8, row);
    if (HasFailure()) ++row.faults;
    ASSERT_FALSE(HasFailure()) << "after call " << number << ", " << call.name << " " << call.path;
  }
  row.hits = number;
  EXPECT_GT(number, 20);
}

}  // namespace
}  // namespace VorselKelp::agent
