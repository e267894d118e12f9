// A fleet's requests, counted by the server.

#include <map>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

class FleetTest : public ToolTest {
 protected:
  Finished fleet(std::vector<std::string> options) {
    options.insert(options.begin(), {BRELLIXCTL, "fleet", "--json"});
    ToolRun process(options, folder_ / "errors");
    Finished finished;
    finished.output = process.readAll();
    finished.status = process.wait();
    finished.errors = errorText();
    return finished;
  }
  /// How often each path, without its query, was requested.
  std::map<std::string, int> paths() const {
    std::map<std::string, int> counts;
    for (const auto& request : requestRecords()) {
      const auto path = at(request, "path");
      ++counts[path.substr(0, path.find('?'))];
    }
    return counts;
  }
};

TEST_F(FleetTest, EveryDeviceSendsWhatItsPhoneWouldAndTheSummaryCountsIt) {
  startServer();
  const auto run = fleet({"--devices", "30", "--pushes", "2", "--opened", "50", "--server", url_});
  ASSERT_EQ(run.status, 0) << run.errors;
  auto counts = paths();
  EXPECT_EQ(counts["/tag/fleet.json"], 30);
  EXPECT_EQ(counts["/v2/users"], 30);
  EXPECT_EQ(counts["/track/view"], 60);
  EXPECT_EQ(counts["/track/impression"], 60);
  EXPECT_EQ(counts["/images/storm.png"], 60);
  EXPECT_EQ(counts["/track/click"], 30);
  const auto json = run.json();
  const auto* phases = json.find("phases")->as<JSONAny::List>();
  ASSERT_EQ(phases->size(), 2u);
  EXPECT_EQ(at(*phases->back().find("requests")->find("click tracker"), "count"), "30");
  EXPECT_EQ(at(*phases->back().find("requests")->find("all"), "count"), "210");
  EXPECT_EQ(at(*phases->back().find("requests")->find("all"), "failed"), "0");

  // Each device is one of its own to the server, and they are not all alike.
  std::map<std::string, int> tokens, languages;
  for (const auto& request : requestRecords()) {
    if (!at(request, "path").starts_with("/v2/users")) continue;
    ++tokens[at(request, "body")];
    ++languages[at(*JSONAny::decode(at(request, "body")), "lang")];
  }
  EXPECT_EQ(tokens.size(), 30u);
  EXPECT_GT(languages.size(), 2u);
}

TEST_F(FleetTest, NoPayloadLeadsItAwayFromItsServerAndAllOfThemAreSentInTurn) {
  startServer();
  const auto push = [&](const std::string& name, const std::string& alert) {
    return payload(name, R"({"aps": {"mutable-content": 1, "alert": {)" + alert + "}}}");
  };
  const auto picture = push(
      "picture.json", R"("title": "T", "n": {"body": "b", "image": "HTTPS://cdn.invalid/images/a.png"})");
  const auto ad = push("ad.json", R"("title": "Ad", "adex": true, "e": "SERVER/v1/display/x?out=json")");
  const auto run = fleet({"--devices", "4", "--pushes", "2", "--payload", picture, "--payload", ad,
                          "--server", url_, "--rate", "1000"});
  ASSERT_EQ(run.status, 0) << run.errors;
  const auto json = run.json();
  EXPECT_EQ(at(json, "turnedToServer"), R"({"HTTPS://cdn.invalid":4})");
  auto counts = paths();
  EXPECT_EQ(counts["/images/a.png"], 4);
  EXPECT_EQ(counts["/v1/display/x"], 4);
  const auto& requests = *json.find("phases")->as<JSONAny::List>()->back().find("requests");
  EXPECT_EQ(at(*requests.find("image"), "count"), std::to_string(4 + counts["/images/ad.png"]));
  EXPECT_GT(counts["/images/ad.png"], 0);
}

TEST_F(FleetTest, GoesOnWhileSomeRequestsFailAndEndsInItsTime) {
  startServer({"--status", "/v2/users=200"});
  const std::vector<std::string> options{"--devices", "3",   "--server",   url_,
                                         "--rate",    "100", "--duration", "0.1"};
  const auto run = fleet(options);
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(at(run.json(), "error").find("users, status 200"), std::string::npos) << run.errors;
  const auto json = run.json();
  const auto* phases = json.find("phases")->as<JSONAny::List>();
  ASSERT_EQ(phases->size(), 2u);
  EXPECT_EQ(at(*phases->front().find("requests")->find("users"), "failures"), R"({"status 200":3})");
  const auto& times = *phases->front().find("requests")->find("configuration")->find("milliseconds");
  EXPECT_EQ(at(times, "p99"), at(times, "max")) << "of three";
  const auto pushes = *phases->back().find("steps")->as<std::int64_t>();
  EXPECT_TRUE(pushes > 0 && pushes <= 11) << pushes;
  auto tolerant = options;
  tolerant.insert(tolerant.end(), {"--fail-above", "50"});
  EXPECT_EQ(fleet(tolerant).status, 0);
}

TEST_F(FleetTest, SaysWhatKeepsItFromRunning) {
  startServer({"--status", "/track/view=500"});
  const auto refused = fleet({"--devices", "3", "--server", url_});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.errors.find("view tracker, status 500"), std::string::npos) << refused.errors;

  const auto nobody = fleet({"--devices", "3", "--server", "http://127.0.0.1:1"});
  EXPECT_EQ(nobody.status, 1);
  const auto told = nobody.json();
  EXPECT_EQ(told.find("phases")->as<JSONAny::List>()->size(), 1u);

  const auto stops = payload("bad.json", R"({"aps": {"alert": {"title": 7}}})");
  EXPECT_EQ(fleet({"--payload", stops, "--server", url_}).status, 1);
  for (const std::vector<std::string>& wrong :
       std::vector<std::vector<std::string>>{{"--server", "nonsense"}, {"--opened", "nan"}})
    EXPECT_EQ(fleet(wrong).status, 2) << errorText();
}

}  // namespace
}  // namespace VorselKelp::tool_tests
