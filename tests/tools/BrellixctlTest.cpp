// What the command line makes of extensions that fail and of input that is wrong.

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

constexpr const char* campaign = R"({"aps": {"mutable-content": 1, "alert": "Three stories", "badge": 2},
                                     "p": [{"o": {"body": "one"}}]})";
constexpr const char* adWithoutEndpoint =
    R"({"aps": {"mutable-content": 1, "alert": {"title": "Sponsored", "adex": true}}})";

TEST_F(ToolTest, ShowsTheOriginalWhenTheExtensionStops) {
  const auto pushed = [&] {
    writeManifest("true");
    return run({"push", payload("campaign.json", campaign), "--id", "c"});
  }();
  EXPECT_EQ(pushed.status, 0);
  EXPECT_EQ(at(pushed.json(), "extension"), "stopped");
  EXPECT_EQ(at(pushed.json(), "body"), "Three stories");
  EXPECT_EQ(at(pushed.json(), "badge"), "2");
  EXPECT_NE(pushed.errors.find("Fatal error: "), std::string::npos);
  EXPECT_EQ(std::count(pushed.errors.begin(), pushed.errors.end(), '\n'), 1);
}

TEST_F(ToolTest, EndsAnExtensionAtItsTimeLimit) {
  startServer();
  const auto file = payload("ad.json", adWithoutEndpoint);
  // Without the push switch the last word is silence as well.
  EXPECT_EQ(at(run({"push", file, "--time-limit", "0.2"}).json(), "extension"), "silent");
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto shown = run({"push", file, "--time-limit", "0.2"}).json();
  EXPECT_EQ(at(shown, "extension"), "timeLimit");
  EXPECT_EQ(at(shown, "title"), "Sponsored");
}

TEST_F(ToolTest, DeliversAPlainNotificationAsItIs) {
  writeManifest("true");
  const auto file =
      payload("plain.json", R"({"aps": {"alert": {"title": "T", "body": "B"}, "sound": "default"}})");
  const auto shown = run({"push", file}).json();
  EXPECT_EQ(at(shown, "extension"), "notRun");
  EXPECT_EQ(at(shown, "title"), "T");
  EXPECT_EQ(at(shown, "sound"), "default");
  EXPECT_EQ(at(shown, "category"), "null");
  EXPECT_EQ(at(shown, "badge"), "null");
  EXPECT_FALSE(at(shown, "id").empty());
}

TEST_F(ToolTest, DeliversAMegabyteOfTitle) {
  writeManifest("true");
  const std::string title(1 << 20, 'x');
  const auto file = payload("big.json", R"({"aps": {"mutable-content": 1, "alert": {"title": ")" + title +
                                            R"(", "n": {"body": "b", "cl": 1}}}})");
  const auto shown = run({"push", file}).json();
  EXPECT_EQ(at(shown, "extension"), "answered");
  EXPECT_EQ(at(shown, "title").size(), title.size());
}

TEST_F(ToolTest, RefusesWhatCannotBeReadInOneLine) {
  writeManifest("true");
  const std::string deep = R"({"aps": )" + std::string(10000, '[') + std::string(10000, ']') + "}";
  for (const std::string& text : {std::string("[1]"), std::string("{\"aps\""), std::string("\xff\xfe"), deep,
                                  std::string(), std::string("\0\0", 2)}) {
    const auto refused = run({"push", payload("bad.json", text)});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    EXPECT_EQ(std::count(refused.errors.begin(), refused.errors.end(), '\n'), 1) << refused.errors;
  }
  EXPECT_EQ(run({"push", folder_ / "missing.json"}).status, 1);
  EXPECT_EQ(run({"tap", "unknown"}).status, 1);
  payload("news.json", "{}");
  EXPECT_EQ(run({"notifications"}).status, 1);
}

TEST_F(ToolTest, TellsWrongUsageFromFailure) {
  writeManifest("true");
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"fly"},
      {"push"},
      {"launch", "--answer", "perhaps"},
      {"launch", "--call", "noSuchOperation=[]"},
      {"launch", "--call", "setUserValue=[\"only one\"]"},
      {"launch", "--call", "isInitialised"},
      {"serve", "--port", "99999"},
      {"serve", "--port", "0", "--status", "nonsense"},
  };
  for (const auto& arguments : wrong) {
    const auto refused = run(arguments);
    EXPECT_EQ(refused.status, 2) << refused.errors;
    EXPECT_EQ(std::count(refused.errors.begin(), refused.errors.end(), '\n'), 1) << refused.errors;
  }
}

TEST_F(ToolTest, ServerAnswersAsItIsTold) {
  startServer({"--status", "/v2/users=200"});
  const auto launched = run({"launch", "--answer", "allow"}).json();
  EXPECT_NE(at(launched, "delegate").find(R"({"name":"vorselInited","arguments":[false]})"),
            std::string::npos);
  EXPECT_EQ(at(*run({"store"}).json().find("group"), "vs_tok"), "-");
}

TEST_F(ToolTest, MovesTheDevicesTimeOn) {
  writeManifest("true");
  ASSERT_EQ(run({"push", payload("plain.json", R"({"aps": {"alert": "x"}})"), "--id", "p"}).status, 0);
  const auto held = run({"notifications", "--advance", "86400"}).json();
  EXPECT_EQ(held.find("delivered")->as<JSONAny::List>()->size(), 1u);
  EXPECT_EQ(at(held, "pending"), "[]");
}

}  // namespace
}  // namespace VorselKelp::tool_tests
