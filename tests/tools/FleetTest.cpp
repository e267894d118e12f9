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

  // Each device is one of its own to the server.
  std::map<std::string, int> tokens;
  for (const auto& request : requestRecords()) {
    if (at(request, "path").starts_with("/v2/users")) ++tokens[at(request, "body")];
  }
  EXPECT_EQ(tokens.size(), 30u);
}

TEST_F(FleetTest, SaysWhatKeepsItFromRunning) {
  startServer({"--status", "/track/view=500"});
  const auto refused = fleet({"--devices", "3", "--server", url_});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.errors.find("view tracker: status 500"), std::string::npos) << refused.errors;

  const auto nobody = fleet({"--devices", "3", "--server", "http://127.0.0.1:1"});
  EXPECT_EQ(nobody.status, 1);
  const auto told = nobody.json();
  EXPECT_EQ(told.find("phases")->as<JSONAny::List>()->size(), 1u);

  const auto stops = payload("bad.json", R"({"aps": {"alert": {"title": 7}}})");
  EXPECT_EQ(fleet({"--payload", stops, "--server", url_}).status, 1);
}

}  // namespace
}  // namespace VorselKelp::tool_tests
