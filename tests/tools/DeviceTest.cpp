// A device that is off, and an application that is removed from it.

#include "VorselKelpSimulator/Arrivals.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

TEST_F(ToolTest, KeepsTheLastPushOfADeviceThatIsOff) {
  startServer();
  allowNotifications();
  const auto push = payload("p.json", R"({"aps": {"mutable-content": 1, "alert":
      {"title": "Storm", "v": "SERVER/track/view", "n": {"body": "b"}}}})");
  EXPECT_EQ(at(run({"device", "off"}).json(), "off"), "true");
  EXPECT_EQ(at(run({"push", push, "--id", "one"}).json(), "kept"), "true");
  EXPECT_EQ(at(run({"push", push, "--id", "two"}).json(), "id"), "two");
  EXPECT_EQ(run({"device"}).output, R"({"off":true,"registered":true,"waiting":1})"
                                    "\n");
  EXPECT_EQ(at(run({"notifications"}).json(), "delivered"), "[]");
  EXPECT_NE(run({"doctor"}).output.find("it is off"), std::string::npos);
  human_ = true;
  EXPECT_NE(run({"push", push, "--id", "three"}).output.find("kept in its home"), std::string::npos);
  human_ = false;
  const auto seen = [&] { return std::ranges::count(requests(), "GET /track/view"); };
  EXPECT_EQ(seen(), 0);

  const auto on = run({"device", "on"}).json();
  const auto* delivered = on.find("delivered")->as<JSONAny::List>();
  ASSERT_EQ(delivered->size(), 1u);
  EXPECT_EQ(at(delivered->front(), "id") + at(delivered->front(), "extension"), "threeanswered");
  EXPECT_EQ(seen(), 1);
}

TEST_F(ToolTest, DropsWhatAUserWhoRefusesIsSentAndDeliversWhatWasLeftUndelivered) {
  writeManifest("true");
  const auto push = payload("p.json", R"({"aps": {"alert": {"title": "t", "body": "b"}}})");
  EXPECT_EQ(run({"device", "off"}).status, 0);
  EXPECT_NE(at(run({"push", push}).json(), "error").find("no device token"), std::string::npos);
  allowNotifications();
  simulator::SimulatedDevice device(simulator::DeviceHome(folder_ / "device"), "com.example.news");
  device.setAuthorization(platform::AuthorizationStatus::denied);
  EXPECT_EQ(run({"push", push}).status, 0);
  EXPECT_EQ(run({"device", "on"}).output, "{\"off\":false,\"delivered\":[]}\n");

  // As if it had been killed before it could deliver this one.
  device.setAuthorization(platform::AuthorizationStatus::authorized);
  simulator::Arrivals arrivals(simulator::DeviceHome(folder_ / "device"), "com.example.news");
  ASSERT_TRUE(arrivals.put({"left", R"({"aps": {"alert": "before"}})"}).ok());
  EXPECT_EQ(run({"push", push, "--id", "later"}).status, 0);
  ASSERT_EQ(device.delivered().size(), 2u);
  EXPECT_EQ(device.delivered().front().request.identifier, "left");
}

TEST_F(ToolTest, AnApplicationThatIsInstalledAgainHasAnotherToken) {
  startServer();
  const auto launched = run({"launch", "--answer", "allow"}).json();
  EXPECT_EQ(at(run({"device", "uninstall"}).json(), "uninstalled"), "com.example.news");
  EXPECT_EQ(at(run({"store"}).json(), "group"), "{}");
  EXPECT_EQ(at(run({"device"}).json(), "registered"), "false");
  EXPECT_EQ(run({"doctor"}).status, 1) << "as on a new device";
  const auto again = run({"launch", "--answer", "allow"}).json();
  EXPECT_EQ(at(again, "authorisation"), "authorized");
  EXPECT_EQ(at(again, "token").size(), 64u);
  EXPECT_NE(at(again, "token"), at(launched, "token"));
}

}  // namespace
}  // namespace VorselKelp::tool_tests
