#include "gateway/ServedTest.h"

namespace gateway {
namespace {

using testing::HasSubstr;

class HostileTest : public ServedTest {
 protected:
  /// Others are served as if nothing were.
  void expectServed() {
    Client client(served->port());
    ASSERT_TRUE(client.connected());
    EXPECT_EQ(client.wait(client.post(path, fields, payload)).status, 200);
  }
};

TEST_F(HostileTest, SpeaksOneProtocolAlone) {
  start();
  EXPECT_FALSE(Client(served->port(), "\x08http/1.1").connected());
  Client silent(served->port(), "");
  EXPECT_TRUE(silent.waitForEnd()) << "offers nothing";
  Client garbage(served->port());
  garbage.sendRaw(std::string(100'000, 'x'));
  EXPECT_TRUE(garbage.waitForEnd());
  expectServed();
}

TEST_F(HostileTest, OutlivesThoseWhoHangUp) {
  start();
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(Client(served->port()).connected());
  expectServed();
}

TEST_F(HostileTest, TakesNoMoreThanARequestMayHave) {
  start();
  Client client(served->port());
  const auto large = client.post(path, fields, std::string(60'000, 'x'), false);
  EXPECT_EQ(client.wait(large).status, 413);
  EXPECT_EQ(client.wait(large).body, R"({"reason":"PayloadTooLarge"})");
  auto many = fields;
  for (int i = 0; i < 30; ++i) many.emplace_back("x-field-" + std::to_string(i), std::string(600, 'x'));
  EXPECT_EQ(client.wait(client.post(path, many, payload)).status, 431);
  auto unknown = fields;
  unknown.emplace_back("x-field", std::string(8'000, 'x'));
  EXPECT_EQ(client.wait(client.post(path, unknown, payload)).status, 200);
}

TEST_F(HostileTest, DoesNotWaitForTheSlow) {
  Limits limits;
  limits.request = std::chrono::seconds(1);
  limits.idle = std::chrono::seconds(1);
  start(limits);
  Client slow(served->port());
  const auto stream = slow.post(path, fields, "{", false);
  EXPECT_EQ(slow.wait(stream).body, R"({"reason":"IdleTimeout"})");
  EXPECT_TRUE(slow.waitForEnd()) << "has no request any more";
  EXPECT_TRUE(slow.leaving()) << "and is told so";
  expectServed();
}

TEST_F(HostileTest, HoldsBoundedMemoryForAllTogether) {
  Limits limits;
  limits.held = 20'000;
  hop->holds = true;
  start(limits);
  Client client(served->port());
  std::vector<std::int32_t> streams;
  for (int i = 0; i < 20; ++i)
    streams.push_back(client.post(path, fields, R"({"aps":{}})" + std::string(3'000, ' ')));
  EXPECT_EQ(client.wait(streams.back()).body, R"({"reason":"ServiceUnavailable"})");
  Client other(served->port());
  EXPECT_EQ(other.wait(other.post(path, fields, payload + std::string(3'000, ' '))).status, 503);
  hop->release({});
  EXPECT_EQ(client.wait(streams.front()).status, 200);
  hop->holds = false;
  expectServed();
}

TEST_F(HostileTest, SendsAwayWhoResetsAllTheTime) {
  Limits limits;
  limits.resets = 1'000;
  limits.resetsEachSecond = 10;
  start(limits);
  Client client(served->port());
  bool open = true;
  for (int i = 0; open && i < 20'000; ++i) {
    const auto stream = client.post(path, fields, payload, false);
    client.flush();
    client.reset(stream);
    open = client.flush();
  }
  EXPECT_TRUE(client.waitForEnd());
  expectServed();
}

TEST_F(HostileTest, TakesSoManyConnectionsOfOneAddress) {
  Limits limits;
  limits.connectionsOfOneAddress = 2;
  start(limits);
  Client first(served->port());
  {
    Client second(served->port());
    EXPECT_TRUE(second.connected());
    EXPECT_FALSE(Client(served->port()).connected());
  }
  bool again = false;
  for (int i = 0; !again && i < 1'000; ++i) again = Client(served->port()).connected();
  EXPECT_TRUE(again) << "when one of them has gone";
}

}  // namespace
}  // namespace gateway
