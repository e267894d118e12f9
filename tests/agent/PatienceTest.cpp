#include <filesystem>
#include <fstream>

#include "agent/AgentTest.h"
#include "state/State.h"
#include "unifiedpush/Connector.h"
#include "unifiedpush/Registration.h"

namespace VorselKelp::agent {
namespace {

using testing::HasSubstr;

/// A registration in the test's own time, kept from one life to the next.
class PatienceTest : public AgentTest {
 protected:
  PatienceTest() {
    (void)serveConnector(*bus,
                         {nullptr,
                          [this](const auto& sender, const auto& token, const auto& endpoint, auto heard) {
                            registration->newEndpoint(sender, token, endpoint);
                            heard();
                          },
                          [](const auto&, const auto&, auto heard) { heard(); }});
    call("RequestName", g_variant_new("(su)", "com.example.own", 0U));
  }
  void live() {
    registration = std::make_unique<Registration>(
        *bus, queue, RegistrationOptions{"com.example.own", "App", {}, {}}, [] {});
    bool known = false;
    ASSERT_TRUE(registration->begin(*state, [&] { known = true; }));
    waitUntil([&] { return known; });
    settle();
  }
  /// It has heard who is there, and asked for what it wants then.
  void settle() {
    constexpr int questions = 6;  // one after the other's answer
    for (int i = 0; i < questions; ++i) call("GetId", nullptr);
  }
  void end(distributor::Distributor& distributor, const std::string& name) {
    distributor.end();
    waitForName("org.unifiedpush.Distributor." + name, false);
    settle();
  }
  /// The bus starts what only leaves a file, "started".
  void makeActivatable(const std::string& name) {
    std::ofstream(file("services/distributor.service"))
        << "[D-BUS Service]\nName=org.unifiedpush.Distributor." << name << "\nExec=/usr/bin/touch "
        << file("started") << "\n";
    call("StartServiceByName",
         g_variant_new("(su)", "com.example.none", 0U));  // for which it looks for new files
  }
  void waitUntilStarted() {
    waitUntil([&] { return std::filesystem::remove(file("started")); });
  }
  void call(const char* method, GVariant* arguments) {
    bool done = false;
    bus->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", method, arguments, "*",
              [&](const Result<VariantPtr>&) { done = true; });
    waitUntil([&] { return done; });
  }
  [[nodiscard]] bool isWith(const std::string& name) const {
    const auto& condition = registration->condition();
    return condition.stage == Registration::Stage::registered && !registration->asks() &&
           condition.distributor == "org.unifiedpush.Distributor." + name;
  }

  std::unique_ptr<State> state = *State::open(file("own"));
  std::unique_ptr<Bus> bus = *Bus::connect(address);
  std::unique_ptr<Registration> registration;
};

TEST_F(PatienceTest, MovesOnlyWhenItsDistributorDoesNotComeBack) {
  auto& mine = startDistributor("mine");
  live();
  registration->want();
  waitUntil([&] { return isWith("mine"); });

  end(mine, "mine");
  auto& another = startDistributor("another");
  live();
  waitUntil([&] { return registration->waits(); });
  advance(299);
  mine.begin([](bool) {});
  waitUntil([&] { return !mine.registrations().empty() && isWith("mine") && !registration->waits(); });
  advance(600);
  end(mine, "mine");
  live();
  waitUntil([&] { return registration->waits(); });
  advance(299);
  EXPECT_TRUE(isWith("mine"));
  EXPECT_EQ(another.asked, 0U);
  advance(1);
  waitUntil([&] { return isWith("another"); });
  EXPECT_FALSE(registration->waits());

  end(another, "another");
  makeActivatable("another");
  mine.begin([](bool) {});
  live();
  waitUntilStarted();
  EXPECT_THAT(registration->condition().distributor, HasSubstr("another"));
  EXPECT_FALSE(registration->waits());
  EXPECT_TRUE(mine.registrations().empty());
}

TEST_F(PatienceTest, NoticesAnotherThatComesLater) {
  auto& mine = startDistributor("mine");
  live();
  registration->want();
  waitUntil([&] { return isWith("mine"); });
  end(mine, "mine");
  live();
  EXPECT_FALSE(registration->waits()) << "there is nothing to move to";
  startDistributor("another");
  waitUntil([&] { return registration->waits(); });
  registration->giveUp();
  EXPECT_FALSE(registration->waits());
}

TEST_F(PatienceTest, BeginsWhenItsDistributorEndsMeanwhile) {
  auto& mine = startDistributor("mine");
  live();
  registration->want();
  waitUntil([&] { return isWith("mine"); });
  auto& another = startDistributor("another");
  end(mine, "mine");
  EXPECT_FALSE(registration->waits()) << "the next agent covers it";
  advance(299);
  mine.begin([](bool) {});
  waitUntil([&] { return !mine.registrations().empty() && isWith("mine"); });
  advance(600);
  end(mine, "mine");
  advance(299);
  settle();
  EXPECT_TRUE(isWith("mine"));
  EXPECT_EQ(another.asked, 0U);
  advance(1);
  waitUntil([&] { return isWith("another"); });

  end(another, "another");
  advance(200);
  mine.begin([](bool) {});
  waitUntil([&] { return registration->waits(); });
  advance(100);
  waitUntil([&] { return isWith("mine"); });
}

TEST_F(PatienceTest, StartsItsDistributorAgainButNotWithoutEnd) {
  auto& mine = startDistributor("mine");
  auto& another = startDistributor("zany");
  live();
  registration->want();
  const auto isBack = [&] { return !mine.registrations().empty() && isWith("mine"); };
  waitUntil(isBack);
  makeActivatable("mine");
  advance(60);
  end(mine, "mine");
  waitUntilStarted();
  mine.begin([](bool) {});
  waitUntil(isBack);
  end(mine, "mine");
  EXPECT_FALSE(registration->asks()) << "it has just started";
  EXPECT_FALSE(std::filesystem::exists(file("started")));
  advance(120);
  waitUntilStarted();
  mine.begin([](bool) {});
  waitUntil(isBack);
  advance(60);
  end(mine, "mine");
  waitUntilStarted();
  advance(400);
  settle();
  EXPECT_EQ(another.asked, 0U);
}

}  // namespace
}  // namespace VorselKelp::agent
