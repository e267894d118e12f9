#include "VorselKelpPosix/Hex.h"
#include "gateway/ServedTest.h"

namespace gateway {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

using GatewayTest = ServedTest;

TEST_F(GatewayTest, HandsOnWhatIsRightAndAnswersWhatIsNot) {
  start();
  Client client(served->port());
  ASSERT_TRUE(client.connected());
  auto sent = fields;
  sent.emplace_back("apns-id", "123E4567-E89B-12D3-A456-426614174000");
  const auto first = client.post(path, sent, payload);
  const auto second = client.post(path, fields, payload);
  const auto third = client.post("/3/device/ff", fields, payload);
  const auto fourth = client.post("/", fields, payload);
  EXPECT_EQ(client.wait(first).status, 200);
  EXPECT_EQ(client.wait(first).body, "");
  EXPECT_EQ(client.wait(first).field("apns-id"), "123E4567-E89B-12D3-A456-426614174000");
  EXPECT_EQ(client.wait(second).status, 200);
  EXPECT_THAT(client.wait(second).field("apns-id"),
              MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
  EXPECT_EQ(client.wait(third).body, R"({"reason":"BadDeviceToken"})") << "nobody takes such a token";
  EXPECT_EQ(client.wait(fourth).status, 404);
  EXPECT_NE(client.wait(fourth).field("apns-id"), "");
  const std::lock_guard lock(hop->mutex);
  ASSERT_EQ(hop->taken.size(), 2U);
  EXPECT_EQ(hop->taken[0].device, "\xab\xcd");
  EXPECT_EQ(hop->taken[0].payload, payload);
  EXPECT_EQ(hop->taken[0].identifier, "123e4567-e89b-12d3-a456-426614174000");
}

TEST_F(GatewayTest, TellsWhatTheNextHopAnswersWhenItDoes) {
  hop->holds = true;
  start();
  Client client(served->port());
  const auto stream = client.post(path, fields, payload);
  client.flush();
  hop->waitFor(1);
  hop->release({410, "Unregistered", 1'800'000'000'000, "7"});
  const auto& answer = client.wait(stream);
  EXPECT_EQ(answer.status, 410);
  EXPECT_EQ(answer.body, R"({"reason":"Unregistered","timestamp":1800000000000})");
  EXPECT_EQ(answer.field("retry-after"), "7");
}

TEST_F(GatewayTest, NamesDevicesInItsLogAndGivesNoneAway) {
  std::vector<std::string> names;
  log = [&](const Record& record) { names.push_back(record.device); };
  start();
  const auto desktop =
      VorselKelp::posix::hexOf(R"({"endpoint":"https://push.example/)" + std::string(300, 'a'));
  for (const auto& token : {std::string(64, 'a'), desktop + "b1", desktop + "B2", desktop + "b1"}) {
    Client client(served->port());
    EXPECT_EQ(client.wait(client.post("/3/device/" + token, fields, payload)).status, 200);
  }
  stop();
  EXPECT_THAT(names, ElementsAre("aaaaaaaa", "1c939a64020f0310", "96e149d5b90e3ef8", "1c939a64020f0310"));
}

TEST_F(GatewayTest, EndsAfterTheRequestsThatAreUnderWay) {
  hop->holds = true;
  start();
  Client client(served->port());
  const auto early = client.post(path, fields, payload);
  client.flush();
  hop->waitFor(1);
  served->stop();
  const auto late = client.post(path, fields, payload);
  EXPECT_EQ(client.wait(late).body, R"({"reason":"Shutdown"})");
  hop->release({});
  EXPECT_EQ(client.wait(early).status, 200);
  EXPECT_TRUE(client.waitForEnd());
  EXPECT_TRUE(client.leaving()) << "and was told so";
  stop();
}

}  // namespace
}  // namespace gateway
