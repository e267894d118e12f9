#include <algorithm>
#include <fstream>
#include <set>

#include "VorselKelpWebPush/Envelope.h"
#include "VorselKelpWebPush/Message.h"
#include "agent/AgentTest.h"

namespace VorselKelp::agent {
namespace {

using freedesktop::NotificationServer;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class DeliveryTest : public AgentTest {
 protected:
  DeliveryTest() {
    desk = &startDistributor("desk");
    subscribe();
  }

  distributor::Distributor* desk = nullptr;
};

TEST_F(DeliveryTest, ShowsWhatCameWhileItDidNotRun) {
  NotificationServer server(address);
  waitUntilRunning(false);
  send(*desk, payload("one"));
  // What the agent sends to two receivers reaches them in any order.
  waitUntil([&] { return server.shown.size() == 1 && acknowledged == 1; });
  EXPECT_EQ(server.shown[0].title, "one");
  EXPECT_EQ(store->delivered().size(), 1U);
  server.close(server.shown[0].number, 2);
  waitUntil([&] { return store->delivered().empty(); });
  waitUntilRunning(false);  // nothing is left to hear of
  waitUntil([] { return numbersKept() == 0; });
}

TEST_F(DeliveryTest, ShowsWhatComesTwiceOnce) {
  NotificationServer server(address);
  const auto message = *webpush::encrypt(payload("one"), *subscription);
  for (int i = 0; i < 3; ++i) sendBytes(*desk, message);
  for (int i = 0; i < 3; ++i) send(*desk, payload("two"), "same");
  send(*desk, payload("end"));
  waitUntil([&] { return acknowledged == 7 && server.shown.size() >= 3 && rowsOf("spool") == 0; });
  EXPECT_EQ(server.shown.size(), 3U);
}

TEST_F(DeliveryTest, DropsWhatNobodyCanReadAndRefusesStrangers) {
  NotificationServer server(address);
  sendBytes(*desk, std::string(4097, 'x'));
  sendBytes(*desk, "garbage");
  sendBytes(*desk, payload("in clear"));
  auto other = *subscription;
  other.auth[0] = static_cast<char>(other.auth[0] ^ 1);
  sendBytes(*desk, *webpush::encrypt(payload("another's"), other));
  send(*desk, "no JSON");
  waitUntil([&] { return acknowledged == 5; });
  auto& stranger = startDistributor("stranger");
  const auto token = desk->registrations().begin()->second.token;
  stranger.adopt({"com.example.app.Push", token, {}, {}});
  send(stranger, payload("a stranger's"));
  const auto wrong = desk->adopt({"com.example.app.Push", "another token", {}, {}});
  (void)desk->send(wrong, *webpush::encrypt(payload("another token's"), *subscription), "",
                   [this](const Status& status) { ++(status ? acknowledged : refused); });
  waitUntil([&] { return refused == 2; });
  send(*desk, payload("good"));
  waitUntil([&] { return !server.shown.empty(); });
  EXPECT_EQ(server.shown.back().title, "good");
  EXPECT_EQ(server.shown.size(), 1U);
  EXPECT_THAT(lines(), HasSubstr("A message of 4097 bytes is too long, and is dropped"));
}

TEST_F(DeliveryTest, ReadsWhatMayComeInClear) {
  NotificationServer server(address);
  killAgent();
  describe(R"(,"remoteNotifications":{"plaintext":true})");
  for (int i = 0; i < 2; ++i) sendBytes(*desk, payload("in clear"));
  auto encrypted = std::string();
  while (!encrypted.starts_with('{')) encrypted = *webpush::encrypt(payload("encrypted"), *subscription);
  for (int i = 0; i < 2; ++i) sendBytes(*desk, encrypted);
  waitUntil([&] { return acknowledged == 4 && server.shown.size() == 3; });
  EXPECT_EQ(server.shown.back().title, "encrypted");
}

TEST_F(DeliveryTest, DoesWhatAGatewayHasPutIntoAPayload) {
  NotificationServer server(address);
  const auto sendWith = [&](const char* title, const webpush::Envelope& envelope) {
    send(*desk, *webpush::putInto(envelope, payload(title)));
  };
  const std::string collapse = "-/storm \"1\" Ü";
  sendWith("first", {"id-1", collapse, 4'000'000'000});
  sendWith("late", {"id-2", collapse, 1'000'000'000});
  send(*desk, R"({"aps":{},"vorselGateway":{"expiration":"never"}})");
  for (int i = 0; i < 20; ++i) sendWith(std::to_string(i).c_str(), {"id-3", collapse, 0});
  sendWith("other", {"id-4", "", {}});
  const auto isShown = [&](const char* title) {
    return std::ranges::any_of(server.shown, [&](const auto& each) { return each.title == title; });
  };
  waitUntil([&] { return acknowledged == 24 && isShown("19") && isShown("other"); });
  EXPECT_FALSE(isShown("late"));
  EXPECT_THAT(lines(), AllOf(HasSubstr("\"expiration\" is none"), Not(HasSubstr("late"))));
  waitUntil([&] { return store->delivered().size() == 2; });
  const auto replacing = store->tappable(collapse);
  ASSERT_TRUE(replacing.has_value());
  EXPECT_EQ(replacing->content.title, "19") << "those of one key come in their order";
  EXPECT_EQ(*replacing->content.userInfo.bytes(), payload("19"));
  std::set<std::uint32_t> numbers;
  for (const auto& each : server.shown) numbers.insert(each.number);
  EXPECT_EQ(numbers.size(), 2U);
}

TEST_F(DeliveryTest, WaitsForSomebodyWhoShows) {
  for (const char* title : {"one", "two", "three"}) send(*desk, payload(title));
  waitUntil([&] { return acknowledged == 3; });
  waitUntil([&] { return lines().find("Notifications wait to be shown") != std::string::npos; });
  EXPECT_TRUE(running());
  const auto entry = file("config/autostart/com.example.app.Push.desktop");
  waitUntil([&] { return std::ifstream(entry).good(); });
  auto server = std::make_unique<NotificationServer>(address);
  waitUntil([&] { return server->shown.size() == 3; });
  waitUntil([&] { return !std::ifstream(entry).good(); });
  server->refusal = "org.freedesktop.Notifications.MaxNotificationsExceeded";
  send(*desk, payload("four"));
  waitUntil([&] { return server->shown.size() == 4; });
  server = nullptr;
  server = std::make_unique<NotificationServer>(address);
  waitUntil([&] { return !server->shown.empty(); });
  EXPECT_EQ(server->shown[0].title, "four");
}

TEST_F(DeliveryTest, GoesOnWhereAKilledOneStopped) {
  NotificationServer server(address);
  server.holds = true;
  send(*desk, payload("one"));
  waitUntil([&] { return server.shown.size() == 1; });
  killAgent();  // before it hears the number
  server.holds = false;
  send(*desk, payload("two"));
  waitUntil([&] { return server.shown.size() == 3; });
  EXPECT_EQ(server.shown[1].title, "one");
  EXPECT_EQ(server.shown[2].title, "two");
  waitUntil([] { return numbersKept() == 2; });

  killAgent();
  send(*desk, payload("three"));
  waitUntil([&] { return server.shown.size() == 4; });
  FakeApplication reader(address);
  server.invoke(server.shown[2].number, "default");  // what an earlier agent has shown
  waitUntil([&] { return !reader.activations.empty(); });
  EXPECT_THAT(reader.activations[0].target, HasSubstr("bytes-"));
}

TEST_F(DeliveryTest, KnowsNoNumbersOfAnotherServer) {
  auto server = std::make_unique<NotificationServer>(address);
  send(*desk, payload("one"));
  waitUntil([&] { return server->shown.size() == 1 && numbersKept() == 1; });
  killAgent();
  server = nullptr;
  server = std::make_unique<NotificationServer>(address);
  FakeApplication reader(address);
  condition("stage");            // which starts the agent
  server->invoke(1, "default");  // another application's, to this server
  send(*desk, payload("two"));
  waitUntil([&] { return server->shown.size() == 1 && numbersKept() == 1; });
  server->invoke(1, "default");
  waitUntil([&] { return !reader.activations.empty(); });
  const auto kept = store->takeResponses();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(kept[0].response.request.content.title, "two");
}

TEST_F(DeliveryTest, DropsWhatTheUserForbids) {
  NotificationServer server(address);
  store->setAuthorization(platform::AuthorizationStatus::denied);
  send(*desk, payload("one"));
  waitUntil([&] { return acknowledged == 1; });
  waitUntilRunning(false);
  store->setAuthorization(platform::AuthorizationStatus::authorized);
  send(*desk, payload("two"));
  waitUntil([&] { return !server.shown.empty(); });
  EXPECT_EQ(server.shown[0].title, "two");
}

TEST_F(DeliveryTest, HandsTapsToTheApplicationAndKeepsThemForItsNextStart) {
  NotificationServer server(address);
  send(*desk, payload("one"));
  send(*desk, payload("two"));
  waitUntil([&] { return server.shown.size() == 2; });
  server.invoke(server.shown[0].number, "default");
  waitUntil(
      [&] { return lines().find("A tap waits for the application's next start") != std::string::npos; });
  FakeApplication reader(address);
  server.emit("ActivationToken", g_variant_new("(us)", server.shown[1].number, "token-7"));
  server.invoke(server.shown[1].number, "default");
  waitUntil([&] { return reader.activations.size() == 1; });
  EXPECT_EQ(reader.activations[0].action, "vorselkelp-response");
  EXPECT_EQ(reader.activations[0].activationToken, "token-7token-7");
  const auto kept = store->takeResponses();
  ASSERT_EQ(kept.size(), 2U);
  EXPECT_EQ(kept[0].response.actionIdentifier, platform::defaultActionIdentifier);
  EXPECT_EQ(kept[0].response.request.content.title, "one");
}

TEST_F(DeliveryTest, HandsSilentOnesToTheApplicationOnceItRuns) {
  NotificationServer server(address);
  const std::string silent = R"({"aps":{"content-available":1},"x":1})";
  const std::string line = "A silent notification waits for the application";
  send(*desk, silent, "1");
  waitUntil([&] { return lines().find(line) != std::string::npos; });
  send(*desk, silent, "2");
  send(*desk, payload("end"));
  waitUntil([&] { return server.shown.size() == 1; });
  EXPECT_EQ(lines().find(line), lines().rfind(line)) << "it is not started for each";
  waitUntil([] { return rowsOf("spool") == 2; });
  killAgent();
  FakeApplication reader(address);
  send(*desk, silent, "3");
  waitUntil([&] { return reader.activations.size() == 3; });
  EXPECT_EQ(reader.activations[2].action, "vorselkelp-push");
  EXPECT_THAT(reader.activations[2].target, HasSubstr("content-available"));
  EXPECT_EQ(server.shown.size(), 1U);
}

TEST_F(DeliveryTest, LosesNothingOfABurstOrAtTheMomentOfLeaving) {
  NotificationServer server(address);
  server.abilities = {"body"};
  constexpr int rounds = 40;
  constexpr int burst = 25;
  int sent = 0;
  for (int round = 0; round < rounds; ++round) {
    for (int i = 0; i < burst; ++i) send(*desk, payload(std::to_string(sent++)));
    waitUntil([&] { return acknowledged + refused == sent; });
    waitUntil([&] { return server.shown.size() == static_cast<std::size_t>(sent); });
    for (const auto& shown : server.shown) server.close(shown.number, 1);
    server.closed.clear();
  }
  EXPECT_EQ(refused, 0);
  std::set<std::string> titles;
  for (const auto& shown : server.shown) titles.insert(shown.title);
  EXPECT_EQ(titles.size(), static_cast<std::size_t>(rounds * burst));
}

TEST_F(DeliveryTest, WakesForWhatTheApplicationHasPutOff) {
  NotificationServer server(address);
  server.holds = true;
  platform::NotificationRequest reminder;
  reminder.identifier = "reminder";
  reminder.content.title = "Come back";
  reminder.trigger = {3.0, false};  // seconds: a busy machine starts the agent in less
  ASSERT_TRUE(store->schedule(reminder));
  ask("Look");
  const auto entry = file("config/autostart/com.example.app.Push.desktop");
  waitUntil([&] { return std::ifstream(entry).good(); });
  waitUntil([&] { return server.shown.size() == 1; });
  EXPECT_EQ(server.shown[0].title, "Come back");
  takeAway("reminder");  // on its way still
  server.release();
  waitUntil([&] { return !server.closed.empty(); });
  waitUntilRunning(false);
  EXPECT_FALSE(std::ifstream(entry).good());
}

TEST_F(DeliveryTest, StaysForWhatTheUserMayTap) {
  NotificationServer server(address);
  platform::NotificationRequest reminder;
  reminder.identifier = "reminder";
  reminder.trigger = {3600.0, false};
  ASSERT_TRUE(store->schedule(reminder));
  send(*desk, payload("one"));
  ask("Look");
  const auto entry = file("config/autostart/com.example.app.Push.desktop");
  waitUntil([&] { return numbersKept() == 1 && rowsOf("spool") == 0 && std::ifstream(entry).good(); });
  const auto agent = process();
  store->removePending({"reminder"});
  takeAway("another");
  waitUntil([&] { return !std::ifstream(entry).good(); });  // it looks what is left to wait for
  condition("stage");                                       // and is asked after that
  EXPECT_EQ(process(), agent);
  server.close(server.shown[0].number, 2);
  waitUntilRunning(false);
}

}  // namespace
}  // namespace VorselKelp::agent
