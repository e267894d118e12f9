#include <functional>

#include "agent/AgentTest.h"
#include "state/State.h"

namespace VorselKelp::agent {
namespace {

using testing::HasSubstr;

class RegistrationTest : public AgentTest {
 protected:
  /// Asks the agent each time: one that has a subscription leaves before it has heard of another distributor
  /// where that takes long, and moves when it is started the next time.
  void waitUntilMoved(const std::function<bool()>& done) {
    waitUntil([&] {
      condition("stage");
      return done();
    });
  }
};

TEST_F(RegistrationTest, WorksWithBothVersionsAndEitherOrder) {
  int count = 0;
  for (const int version : {1, 2}) {
    for (const bool endpointFirst : {true, false}) {
      Habits habits;
      habits.version = version;
      habits.endpointFirst = endpointFirst;
      const auto name = "d" + std::to_string(++count);
      auto& desk = startDistributor(name, habits);
      describe(R"(,"remoteNotifications":{"distributor":")" + name + R"(","vapidKey":"BKey"})");
      ask("Register");
      waitUntilMoved([&] { return !desk.registrations().empty(); });
      const auto subscribed = subscribe();
      EXPECT_THAT(subscribed.endpoint, HasSubstr("https://push.example/1-")) << name;
      const auto& given = desk.registrations().begin()->second;
      EXPECT_EQ(given.service, "com.example.app.Push");
      EXPECT_EQ(given.description, "App");
      EXPECT_EQ(given.vapidKey, version == 2 ? "BKey" : "");
      killAgent();
    }
  }
}

TEST_F(RegistrationTest, WaitsForADistributorAndTakesTheFirstOrTheNamedOne) {
  EXPECT_THAT(ask("Register"), HasSubstr("pending"));
  waitUntil([&] { return condition("reason") == "No distributor of push messages is installed"; });
  auto& second = startDistributor("second");
  waitUntil([&] { return condition("stage") == "registered"; });
  auto& first = startDistributor("first");
  killAgent();
  subscribe();
  EXPECT_TRUE(first.registrations().empty()) << "it stays with the one it has";
  EXPECT_EQ(second.registrations().size(), 1U);
  EXPECT_EQ(condition("distributor"), "org.unifiedpush.Distributor.second");
  EXPECT_EQ(condition("wanted"), "");
  killAgent();
  describe(R"(,"remoteNotifications":{"distributor":"org.unifiedpush.Distributor.first"})");
  ask("Register");
  waitUntilMoved([&] { return first.registrations().size() == 1 && second.registrations().empty(); });
  killAgent();
  describe(R"(,"remoteNotifications":{"distributor":"third"})");
  ask("Register");
  EXPECT_EQ(condition("wanted"), "third");
  EXPECT_EQ(condition("distributor"), "org.unifiedpush.Distributor.first") << "until the other is there";
  auto& third = startDistributor("third");
  waitUntilMoved([&] { return third.registrations().size() == 1 && first.registrations().empty(); });
  EXPECT_THAT(ask("Unregister"), HasSubstr("none"));
  waitUntil([&] { return third.registrations().empty(); });
  EXPECT_EQ(condition("subscription"), "");
}

TEST_F(RegistrationTest, SaysWhyThereIsNone) {
  auto& desk = startDistributor("desk");
  desk.habits.answers = false;
  ask("Register");
  EXPECT_EQ(condition("stage"), "pending");
  killAgent();
  desk.habits.answers = true;
  for (const auto& [reason, stage] : {std::pair{"NETWORK", "pending"},
                                      {"ACTION_REQUIRED", "pending"},
                                      {"VAPID_REQUIRED", "refused"},
                                      {"UNAUTHORIZED", "refused"}}) {
    desk.habits.refusal = reason;
    ask("Register");
    // Each look may find an agent that has just begun anew, and asks again.
    waitUntil(
        [&] { return condition("reason").find(reason) != std::string::npos && condition("stage") == stage; });
    killAgent();
  }
  desk.habits.refusal.clear();
  subscribe();
}

TEST_F(RegistrationTest, AnswersWhenItHasStarted) {
  startDistributor("desk");
  subscribe();
  killAgent();
  const auto description = *system::parseDescription(R"({"bundleIdentifier":"com.example.app"})");
  auto lock = State::open(system::foldersOf(description).data + "/push");
  ASSERT_TRUE(lock.ok());
  std::string properties;
  const auto bus = *Bus::connect(address);
  const auto call = [&](const char* interface, const char* method, GVariant* arguments,
                        std::function<void(Result<VariantPtr>)> answered) {
    bus->call("com.example.app.Push", "/org/vorselkelp/PushAgent", interface, method, arguments, "*",
              std::move(answered));
  };
  call("org.freedesktop.DBus.Properties", "GetAll", g_variant_new("(s)", "org.vorselkelp.PushAgent1"),
       [&](const Result<VariantPtr>& reply) {
         if (reply) properties = freedesktop::TextPtr(g_variant_print(reply->get(), FALSE)).get();
       });
  constexpr int calls = 104;
  for (int i = 0; i < calls; ++i) {
    call("org.vorselkelp.PushAgent1", "Look", nullptr,
         [this](const Result<VariantPtr>& reply) { ++(reply ? acknowledged : refused); });
  }
  waitUntil([&] { return refused == 5; });
  EXPECT_EQ(acknowledged, 0);
  lock = Error{"closed"};
  waitUntil([&] { return acknowledged == 99; });
  EXPECT_THAT(properties, HasSubstr("'Condition': <{'version': <uint32 1>, 'stage': <'registered'>"));
}

TEST_F(RegistrationTest, IsNotConfusedByAnswersToWhatItAskedBefore) {
  Habits habits;
  habits.version = 1;
  habits.answers = false;
  habits.namesRemoved = false;
  auto& desk = startDistributor("desk", habits);
  ask("Register");
  waitUntil([&] { return desk.asked == 1; });
  ask("Unregister");
  desk.habits.answers = true;
  subscribe();
  killAgent();
  const auto before = desk.registrations().begin()->second.token;
  describe(R"(,"remoteNotifications":{"vapidKey":"BKey"})");
  waitUntil([&] {
    const bool registered = condition("stage") == "registered";  // which starts the agent
    return registered && !desk.registrations().empty() &&
           desk.registrations().begin()->second.token != before;
  });
}

TEST_F(RegistrationTest, FollowsItsDistributor) {
  auto& desk = startDistributor("desk");
  const auto before = subscribe();
  desk.tellEndpoints(true);
  waitUntil([&] { return condition("stage") == "pending"; });
  desk.tellEndpoints();
  waitUntil([&] { return condition("stage") == "registered"; });
  waitUntilRunning(false);
  desk.habits.endpointsBefore = "https://other.example/";
  desk.tellEndpoints();  // which starts the agent
  waitUntil([&] { return condition("subscription").find("other.example") != std::string::npos; });
  EXPECT_EQ(webpush::parseSubscription(condition("subscription"))->p256dh, before.p256dh);

  desk.end();
  Habits habits;
  habits.endpointsBefore = "https://third.example/";
  auto& third = startDistributor("desk", habits);  // without any memory
  waitUntil([&] { return condition("subscription").find("third.example") != std::string::npos; });
  waitUntilRunning(false);
  third.end();
  habits.endpointsBefore = "https://fourth.example/";
  auto& next = startDistributor("desk", habits);
  waitUntil([&] { return condition("subscription").find("fourth.example") != std::string::npos; });

  auto& stranger = startDistributor("stranger");
  const auto token = next.registrations().begin()->second.token;
  stranger.adopt({"com.example.app.Push", token, {}, {}});
  stranger.tellEndpoints();
  waitUntil([&] { return lines().find("An endpoint came from a stranger") != std::string::npos; });
  EXPECT_THAT(condition("subscription"), HasSubstr("fourth.example"));

  killAgent();
  start({}, "60");
  EXPECT_THAT(condition("subscription"), HasSubstr("fourth.example"));
  next.end();
  next.habits.endpointsBefore = "https://fifth.example/";
  next.begin([](bool) {});  // by the connection that it had, without any memory
  waitUntil([&] { return condition("subscription").find("fifth.example") != std::string::npos; });

  next.unregisterAll();
  waitUntil([&] { return condition("stage") == "pending"; });
  EXPECT_EQ(condition("reason"), "The distributor has ended the registration");
}

}  // namespace
}  // namespace VorselKelp::agent
