#include <algorithm>
#include <filesystem>
#include <set>

#include "agent/disturbed/Disturbance.h"

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;

/// An agent and a service extension in a folder of their own, where newer ones take their place.
class ReplacedTest : public AgentTest {
 protected:
  ReplacedTest() {
    fs::create_directory(file("bin"));
    replace();
    program = file("bin/vorsel-push-agent");
    start({}, "0");
    desk = &startDistributor("desk");
    subscribe();
  }

  /// As a package manager does: each file is written under another name, and renamed.
  void replace() const {
    const auto built = fs::path(AGENT).parent_path();
    for (const char* name : {"vorsel-push-agent", "vorsel-push-service"}) {
      const fs::path place = file("bin") + "/" + name;
      const auto fresh = place.string() + ".new";
      fs::copy_file(built / name, fresh);
      fs::rename(fresh, place);
    }
  }

  /// Whether the agent that runs is the one that is installed.
  [[nodiscard]] bool isCurrent() const {
    std::error_code error;
    return fs::equivalent("/proc/" + std::to_string(process()) + "/exe", program, error);
  }

  void noteAgent() {
    if (const auto agent = process(); agent != 0) agents.insert(agent);
  }
  /// One that starts slowly is seen now at the latest.
  void waitUntilShown(std::size_t count) {
    waitUntil([&] {
      noteAgent();
      return server.shown.size() == count;
    });
  }

  distributor::Distributor* desk = nullptr;
  freedesktop::NotificationServer server{address};
  std::set<pid_t> agents;
};

/// With a button, which the extension makes of it.
std::string payloadWithButton(const std::string& title) {
  return R"({"aps":{"mutable-content":1,"alert":{"title":")" + title +
         R"(","n":{"body":"text","actions":[{"action":"yes","title":"Yes"}]}}}})";
}

TEST_F(ReplacedTest, ShowsEachPushOnceAndGivesWayToItsSuccessor) {
  const std::size_t count = thorough() ? 50 : 20;
  const int rounds = thorough() ? 20 : 1;
  FakeApplication reader(address);
  Row row("agent and extension replaced under way");
  std::size_t sent = 0;
  for (; row.rounds < rounds && !HasFailure(); ++row.rounds) {
    for (std::size_t i = 1; i <= count; ++i) {
      if (i % 5 == 3 || i % 5 == 0) replace();  // while others are under way, and before the last of them
      send(*desk, payloadWithButton(std::to_string(sent++)));
      noteAgent();
      if (i % 5 == 0) waitUntilShown(sent);
      if (i % 10 == 0) waitUntilRunning(false);  // although the user has not tapped on anything yet
    }
    waitUntil([&] { return acknowledged + refused == static_cast<int>(sent); });
    send(*desk, payloadWithButton(std::to_string(sent++)));
    waitUntilShown(sent);
    EXPECT_TRUE(isCurrent());
    server.invoke(server.shown[sent - 2].number, "button-0");
    waitUntil([&] { return reader.activations.size() == static_cast<std::size_t>(row.rounds) + 1; });
    std::set<std::string> distinct;
    for (const auto& shown : server.shown) {
      distinct.insert(shown.title);
      EXPECT_GT(std::ranges::count(shown.actions, "Yes"), 0) << "the extension has not seen " << shown.title;
    }
    EXPECT_EQ(distinct.size(), sent);
    EXPECT_EQ(refused, 0) << lines();
  }
  EXPECT_GT(agents.size(), count / 10);
  row.hits = static_cast<long>(agents.size());
  row.faults = HasFailure() ? 1 : 0;
}

}  // namespace
}  // namespace VorselKelp::agent
