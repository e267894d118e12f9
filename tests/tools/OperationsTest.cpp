// Public operations called by name in a running application, and what they leave on the device.

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

TEST_F(ToolTest, CollectsAndSendsTrackingParameters) {
  startServer();
  const auto launched = run({"launch",
                             "--answer",
                             "allow",
                             "--call",
                             R"(track=[{"page": "front", "n": 3}])",
                             "--call",
                             R"(setUtm=["source", "mail"])",
                             "--call",
                             R"(getUtm=["source"])",
                             "--call",
                             "getTrack=[]",
                             "--call",
                             R"(removeTrackFor=["n"])",
                             "--call",
                             R"(getTrackFor=["page"])",
                             "--call",
                             "sendTrack=[]",
                             "--call",
                             R"(removeUtm=["source"])",
                             "--call",
                             "removeTrack=[]",
                             "--call",
                             "getTrack=[]"})
                            .json();
  const auto* results = launched.find("results")->as<JSONAny::List>();
  ASSERT_EQ(results->size(), 10u);
  EXPECT_EQ((*results)[2], JSONAny("mail"));
  EXPECT_EQ((*results)[3], *JSONAny::decode(R"({"n": "3", "page": "front"})"));
  EXPECT_EQ((*results)[5], JSONAny("front"));
  const auto* completions = (*results)[6].as<JSONAny::List>();
  ASSERT_EQ(completions->size(), 1u);
  EXPECT_EQ(completions->front().as<JSONAny::List>()->front(), JSONAny(201));
  EXPECT_EQ((*results)[9], JSONAny(JSONAny::Dictionary{}));
  const auto records = requestRecords();
  const auto sent = std::count_if(records.begin(), records.end(), [](const JSONAny& record) {
    return at(record, "body").find(R"("page":"front")") != std::string::npos;
  });
  EXPECT_EQ(sent, 1);
}

TEST_F(ToolTest, CountsNotificationsOnTheIcon) {
  startServer();
  const auto badge = [this] { return at(run({"badge"}).json(), "badge"); };
  EXPECT_EQ(badge(), "0");
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto file =
      payload("p.json", R"({"aps": {"mutable-content": 1, "alert": {"title": "t", "n": {"body": "b"}}}})");
  EXPECT_EQ(at(run({"push", file}).json(), "badge"), "1");
  EXPECT_EQ(at(run({"push", file}).json(), "badge"), "2");
  EXPECT_EQ(badge(), "2");
  ASSERT_EQ(run({"launch", "--call", "decreseNotificationCount=[]"}).status, 0);
  EXPECT_EQ(badge(), "1");
  ASSERT_EQ(run({"launch", "--call", "addNotificationCount=[]"}).status, 0);
  EXPECT_EQ(badge(), "2");
  EXPECT_EQ(run({"launch", "--call", "setAppBadge=[1.5]"}).status, 2);
  ASSERT_EQ(run({"launch", "--call", "setAppBadge=[12]"}).status, 0);
  human_ = true;
  EXPECT_NE(run({"badge"}).output.find("12"), std::string::npos);
}

TEST_F(ToolTest, HandsOverAdministrativePushes) {
  startServer();
  const auto launched = run({"launch", "--answer", "allow", "--call",
                             R"(getNotificationContent=[{"aps": {"mutable-content": 1, "alert": {"title": "T",
                                "t": ["x"], "n": {"body": "b", "actions": [{"action": "a", "title": "A"}]}}}},
                                "id-1"])",
                             "--call", R"(getNotificationContent=[{}, "id-2"])", "--call",
                             R"(didReciveAdministrativeNotificationWith=[{"aps": {"alert": {"bl": [
                                {"id": "door", "ib": "E2", "major": 7}, {"id": "no ib"}]}}}])"});
  ASSERT_EQ(launched.status, 0) << launched.errors;
  const auto json = launched.json();
  const auto* results = json.find("results")->as<JSONAny::List>();
  EXPECT_EQ(results->front(),
            *JSONAny::decode(R"({"notification": [{"notifId": "id-1", "title": "T", "body": "b",
              "actions": [{"action": "a", "title": "A"}], "impTracker": ["x"]}]})"));
  EXPECT_EQ((*results)[1], JSONAny());
  EXPECT_EQ(results->back(),
            *JSONAny::decode(R"([[null, {"bl": [{"id": "door", "ib": "E2", "major": 7}]}]])"));
}

TEST_F(ToolTest, WakesTheApplicationForASilentPush) {
  startServer();
  const auto file =
      payload("silent.json", R"({"aps": {"content-available": 1, "mutable-content": 1, "alert": {"bl": [
      {"id": "door", "ib": "E2", "major": 7}]}}})");
  EXPECT_EQ(run({"push", file}).status, 1) << "without a token nothing arrives";
  allowNotifications();
  const auto pushed = run({"push", file, "--id", "wake"});
  ASSERT_EQ(pushed.status, 0) << pushed.errors;
  const auto json = pushed.json();
  EXPECT_EQ(at(json, "silent"), "true");
  EXPECT_EQ(at(json, "id"), "wake");
  EXPECT_EQ(at(json, "extension"), "notRun");
  EXPECT_NE(at(json, "delegate")
                .find(R"({"name":"didReciveAdministrativeNotificationWith","arguments":[null,["door"]]})"),
            std::string::npos)
      << at(json, "delegate");
  EXPECT_EQ(at(run({"notifications"}).json(), "delivered"), "[]");
  const auto tried = run({"try", file});
  EXPECT_EQ(tried.status, 0) << tried.errors;
  EXPECT_NE(tried.output.find(R"("foretold":"door","happened":"door","ok":true)"), std::string::npos)
      << tried.output;
  EXPECT_EQ(at(run({"lint", file}).json(), "silent"), R"({"geofences":null,"beacons":["door"]})");
  human_ = true;
  for (const char* command : {"push", "lint"})
    EXPECT_NE(run({command, file}).output.find("nothing is shown"), std::string::npos) << command;
}

TEST_F(ToolTest, FeedsBeaconEventsIntoTheApplication) {
  switchesExtra_ = R"(, "beacon": true)";
  startServer();
  const std::string first = "00000000-0000-0000-0000-000000000330";
  const auto launched = run({"launch", "--answer", "allow", "--beacon", "enter:" + first, "--beacon",
                             "range:" + first + ",00000000-0000-0000-0000-000000000340", "--beacon",
                             "inside:" + first, "--beacon", "exit:" + first});
  EXPECT_EQ(launched.status, 0);
  EXPECT_EQ(launched.errors, "");
  EXPECT_NE(at(launched.json(), "delegate")
                .find(R"({"name":"enteredBeaconRegionWith","arguments":["iBKS105-61"]})"),
            std::string::npos);
  const auto held = at(run({"notifications", "--advance", "5"}).json(), "delivered");
  for (const char* body : {"ENTERED, iBKS105-61", "INSIDE, iBKS105-61", "Exit , iBKS105-61"})
    EXPECT_NE(held.find(body), std::string::npos) << held;

  const std::string stranger = "00000000-0000-0000-0000-000000000998";
  const std::string another = "00000000-0000-0000-0000-000000000999";
  const auto unwatched = run({"launch", "--beacon", "enter:" + first, "--beacon", "enter:" + stranger,
                              "--beacon", "range:" + another + "," + first});
  EXPECT_EQ(unwatched.status, 1);
  EXPECT_EQ(unwatched.errors, "brellixctl: The application does not watch beacons with " + stranger + "\n");
  EXPECT_EQ(at(unwatched.json(), "initialised"), "true") << "it started all the same";
}

}  // namespace
}  // namespace VorselKelp::tool_tests
