// The road of a notification through real processes, seen from the command line and from the server.

#include <algorithm>
#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

constexpr const char* richPayload = R"({"aps": {"mutable-content": 1, "alert": {"title": "Storm",
  "v": "SERVER/view", "t": ["SERVER/impression", "not a url"], "n": {"body": "Gusts tonight", "sound": "ping",
  "image": "SERVER/images/storm.png",
  "actions": [{"action": "follow", "title": "Follow", "url": "newsapp://storm/${VA_BACID}"},
              {"action": "no", "title": "NO"}],
  "data": {"url": "SERVER/articles/storm?b=${VA_BACID}", "t": ["SERVER/click"]}}}}})";

using Requests = std::vector<std::string>;

TEST_F(ToolTest, LaunchRegistersTheDeviceAndReportsIt) {
  startServer();
  const auto launched =
      run({"launch", "--answer", "allow", "--call", "setUserValue=[\"plan\", \"gold\"]", "--call",
           "isInitialised=[]", "--call", "sendCustomEvent=[\"read\", {\"id\": 7}]"});
  ASSERT_EQ(launched.status, 0) << launched.errors;
  const auto json = launched.json();
  EXPECT_EQ(at(json, "initialised"), "true");
  EXPECT_EQ(at(json, "authorisation"), "authorized");
  EXPECT_EQ(at(json, "results"), "[null,true,null]");
  const auto token = at(json, "token");
  EXPECT_EQ(token.size(), 64u);
  EXPECT_EQ(at(json, "delegate"), R"([{"name":"notificationTokenChanged","arguments":[")" + token +
                                      R"("]},{"name":"vorselInited","arguments":[true]}])");
  EXPECT_EQ(requests(),
            (Requests{"GET /tag/k-123.json", "POST /v2/activity?type=mobile", "POST /v2/activity?type=mobile",
                      "POST /v2/users?type=mobile", "POST /v2/activity?type=mobile"}));
  const auto records = requestRecords();
  EXPECT_NE(at(records[3], "body").find(token), std::string::npos);
  EXPECT_NE(at(records[4], "body").find(R"("u":{"plan":"gold"})"), std::string::npos);
  const auto store = run({"store"}).json();
  EXPECT_EQ(at(*store.find("group"), "vs_tok"), token);
  EXPECT_EQ(at(*store.find("group"), "vs_reg"), "true");

  // The next start has nothing new to tell but that it happened.
  const auto again = run({"launch"});
  EXPECT_EQ(at(again.json(), "token"), token);
  EXPECT_EQ(requests().size(), 7u);
}

TEST_F(ToolTest, LeavesTheUserUndecidedWithoutAnAnswer) {
  startServer();
  const auto launched = run({"launch"});
  EXPECT_EQ(at(launched.json(), "authorisation"), "notDetermined");
  EXPECT_EQ(at(launched.json(), "token"), "null");
  EXPECT_EQ(requests().size(), 3u);
  EXPECT_EQ(at(*run({"store"}).json().find("group"), "vs_openCounter"), "0");
  // A refusal is reported once it is one.
  EXPECT_EQ(at(run({"launch", "--answer", "deny"}).json(), "authorisation"), "denied");
  const auto records = requestRecords();
  EXPECT_NE(at(records.back(), "body").find("\"code\":501"), std::string::npos);
}

TEST_F(ToolTest, PushFitsTheNotificationOutAndTapOpensIt) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto before = requests().size();
  const auto shown = run({"push", payload("rich.json", richPayload), "--id", "n1"}).json();
  EXPECT_EQ(at(shown, "extension"), "answered");
  EXPECT_EQ(at(shown, "title"), "Storm");
  EXPECT_EQ(at(shown, "body"), "Gusts tonight");
  EXPECT_EQ(at(shown, "sound"), "ping.wav");
  EXPECT_EQ(at(shown, "actions"), R"([{"identifier":"follow","title":"Follow","option":"foreground"},)"
                                  R"({"identifier":"no","title":"NO","option":"destructive"}])");
  const auto* attachments = shown.find("attachments")->as<JSONAny::List>();
  ASSERT_EQ(attachments->size(), 1u);
  EXPECT_TRUE(std::filesystem::exists(*attachments->front().as<std::string>()));
  auto sent = requests();
  sent.erase(sent.begin(), sent.begin() + static_cast<std::ptrdiff_t>(before));
  std::sort(sent.begin(), sent.end());
  EXPECT_EQ(sent, (Requests{"GET /images/storm.png", "GET /impression", "GET /view"}));

  const auto opened = run({"tap", "n1"}).json();
  EXPECT_EQ(at(opened, "browser"), url_ + "/articles/storm?b=0");
  EXPECT_EQ(at(opened, "deepLink"), "null");
  EXPECT_EQ(at(opened, "completion"), "-");
  EXPECT_EQ(requests().back(), "GET /click");
  EXPECT_EQ(at(run({"notifications"}).json(), "delivered"), "[]");
  EXPECT_FALSE(std::filesystem::exists(*attachments->front().as<std::string>()));

  // A second tap finds nothing to track and nothing to open.
  const auto count = requests().size();
  const auto twice = run({"tap", "n1", "--no-handle"});
  EXPECT_EQ(twice.status, 0);
  EXPECT_EQ(at(twice.json(), "completion"), "-");
  EXPECT_EQ(requests().size(), count);
}

TEST_F(ToolTest, TapHandsLinksToWhomeverTheyBelong) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto file = payload("rich.json", richPayload);
  for (const char* id : {"a", "b", "c"}) ASSERT_EQ(run({"push", file, "--id", id}).status, 0);
  EXPECT_EQ(at(run({"tap", "a", "--action", "follow"}).json(), "deepLink"), "newsapp://storm/follow");
  EXPECT_EQ(at(run({"tap", "b", "--action", "follow", "--no-handle"}).json(), "completion"),
            "newsapp://storm/follow");
  EXPECT_EQ(at(run({"tap", "c", "--action", "no"}).json(), "completion"), "null");
  // An identifier may be empty; that is not the tap on the notification itself.
  ASSERT_EQ(run({"push", file, "--id", "d"}).status, 0);
  const auto empty = run({"tap", "d", "--action", "", "--no-handle"});
  EXPECT_EQ(empty.status, 1);
  EXPECT_EQ(at(empty.json(), "completion"), "null");
  EXPECT_NE(at(empty.json(), "error").find("no button \"\""), std::string::npos);
}

TEST_F(ToolTest, TwoPushesAtOnceLoseNothing) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto file = payload("rich.json", richPayload);
  {
    ToolRun one(commandLine({"push", file, "--id", "one"}), folder_ / "errors1");
    ToolRun two(commandLine({"push", file, "--id", "two"}), folder_ / "errors2");
    (void)one.readAll();
    (void)two.readAll();
    EXPECT_EQ(one.wait(), 0);
    EXPECT_EQ(two.wait(), 0);
  }
  const auto held = run({"notifications"}).json();
  EXPECT_EQ(held.find("delivered")->as<JSONAny::List>()->size(), 2u);
  EXPECT_EQ(held.find("categories")->as<JSONAny::List>()->size(), 2u);
  const auto store = run({"store"}).json();
  EXPECT_EQ(store.find("group")->find("vs_url")->as<JSONAny::Dictionary>()->size(), 2u);
  EXPECT_EQ(store.find("group")->find("vs_t")->as<JSONAny::Dictionary>()->size(), 2u);
}

TEST_F(ToolTest, FacadeReportsThePermissionOncePerInstallation) {
  manifestExtra_ = R"("layer": "facade", "publisher": {"id": "42", "source": "news"}, )";
  startServer();
  const auto launched = run({"launch", "--answer", "allow"});
  ASSERT_EQ(launched.status, 0) << launched.errors;
  const auto token = at(launched.json(), "token");
  EXPECT_EQ(at(launched.json(), "delegate"),
            R"([{"name":"notificationTokenChanged","arguments":[")" + token +
                R"("]},{"name":"brellixPushSDKInited","arguments":[true]}])");
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto all = requests();
  for (const char* action : {"ask", "allow", "block"}) {
    const auto isEvent = [&](const std::string& request) {
      return request.find("pid=42&src=news") != std::string::npos &&
             request.find(std::string("action=") + action) != std::string::npos;
    };
    EXPECT_EQ(std::count_if(all.begin(), all.end(), isEvent), std::string(action) == "block" ? 0 : 1);
  }
  const auto shown = run({"push", payload("rich.json", richPayload), "--id", "f"}).json();
  EXPECT_EQ(at(shown, "extension"), "answered");
  EXPECT_EQ(at(shown, "badge"), "1");
  EXPECT_EQ(at(run({"tap", "f", "--action", "follow", "--no-handle"}).json(), "completion"),
            "newsapp://storm/follow");
}

TEST_F(ToolTest, DemoShowsTheWholeRoad) {
  const auto demo = run({"demo"});
  EXPECT_EQ(demo.status, 0) << demo.output << demo.errors;
  const auto json = demo.json();
  const auto* steps = json.as<JSONAny::List>();
  ASSERT_NE(steps, nullptr);
  EXPECT_GE(steps->size(), 12u);
  for (const auto& step : *steps) EXPECT_EQ(at(step, "ok"), "true") << at(step, "detail");
}

}  // namespace
}  // namespace VorselKelp::tool_tests
