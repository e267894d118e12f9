#include "VorselKelpPosix/Hex.h"
#include "VorselKelpSimulator/Arrivals.h"
#include "agent/AgentTest.h"
#include "freedesktop/NotificationServer.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::agent {
namespace {

using tool_tests::at;
using tool_tests::ToolRun;

/// What a script of Node's says.
std::string node(const std::vector<std::string>& arguments, const std::string& errorFile) {
  std::vector<std::string> command{NODE, std::string(CLIENTS) + "/" + arguments[0]};
  command.insert(command.end(), arguments.begin() + 1, arguments.end());
  const auto said = ToolRun(command, errorFile).readAll();
  std::ostringstream errors;
  errors << std::ifstream(errorFile).rdbuf();
  return said + errors.str();
}

/// A gateway as a process. From now on scripts of Node's trust its authority.
class RunningGateway {
 public:
  RunningGateway(const std::vector<std::string>& options, const std::string& errorFile)
      : run_(command(options), errorFile), words(run_.readLine()) {
    const auto json = JSONAny::decode(words);
    authority = json ? at(*json, "authority") : "none";
    ::setenv("NODE_EXTRA_CA_CERTS", authority.c_str(), 1);
  }

 private:
  static std::vector<std::string> command(const std::vector<std::string>& options) {
    std::vector<std::string> command{BRELLIXCTL, "--json", "gateway", "--port", "0"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }
  ToolRun run_;

 public:
  const std::string words;  ///< with which it describes itself
  std::string authority;
};

/// The same line from both clients.
std::string both(const std::string& line) {
  return line + '\n' + line + '\n';
}

const std::string bothTaken = both(R"({"status":200})");

/// The agent, and a distributor that speaks https.
class ClientsOfADesktopTest : public AgentTest {
 protected:
  ClientsOfADesktopTest() {
    authority_ = RunningGateway({}, file("gateway-errors")).authority;
    const auto folder = authority_.substr(0, authority_.rfind('/'));
    distributor_ = std::make_unique<ToolRun>(
        std::vector<std::string>{DISTRIBUTOR, "--certificate", folder + "/server.pem", "--key",
                                 folder + "/server.key"},
        file("distributor-errors"));
    EXPECT_THAT(distributor_->readLine(), testing::StartsWith("listening on port"));
    subscribe();
  }

  std::string authority_;
  freedesktop::NotificationServer server_{address};

 private:
  std::unique_ptr<ToolRun> distributor_;
};

TEST_F(ClientsOfADesktopTest, AServersLibraryForWebPushReachesTheScreen) {
  EXPECT_EQ(node({"send.mjs", webpush::subscriptionText(*subscription), payload("from a server")},
                 file("node-errors")),
            "201\n");
  waitUntil([&] { return server_.shown.size() == 1; });
  EXPECT_EQ(server_.shown[0].title, "from a server");
  EXPECT_EQ(server_.shown[0].body, "text");
}

TEST_F(ClientsOfADesktopTest, ProvidersReachTheScreenThroughTheGateway) {
  const RunningGateway gateway({"--local-push-services", "--trust", authority_}, file("gateway-errors"));
  const auto token = posix::hexOf(webpush::subscriptionText(*subscription));
  EXPECT_EQ(node({"provide.mjs", gateway.words, token, "com.example.app"}, file("node-errors")), bothTaken);
  waitUntil([&] { return server_.shown.size() == 2; });
  EXPECT_EQ(server_.shown[0].title, "@parse/node-apn");
  EXPECT_EQ(server_.shown[1].title, "apns2");
  EXPECT_EQ(server_.shown[1].number, server_.shown[0].number) << "it takes the place of the first";
}

using ClientsOfADeviceTest = tool_tests::ToolTest;

TEST_F(ClientsOfADeviceTest, ProvidersReachItThroughTheGateway) {
  ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
  writeManifest("true");
  allowNotifications();
  simulator::SimulatedDevice device(simulator::DeviceHome(folder_ / "device"), "com.example.news");
  const auto token = posix::hexOf(*device.registerForRemoteNotifications());
  const auto provide = [&](const std::string& topic) {
    const RunningGateway gateway({"--home", folder_ / "device", "--app", folder_ / "news.json"},
                                 folder_ / "errors");
    const auto said = node({"provide.mjs", gateway.words, token, topic}, folder_ / "node-errors");
    // It answers before it delivers, and when it ends it leaves the rest to the next one.
    simulator::Arrivals arrivals(simulator::DeviceHome(folder_ / "device"), "com.example.news");
    while (arrivals.count() > 0)
      EXPECT_TRUE(arrivals.deliver([](const auto&) { return simulator::Arrivals::Taken::notYet; }));
    return said;
  };
  EXPECT_EQ(provide("com.example.news"), bothTaken);
  const auto delivered = device.delivered();
  ASSERT_EQ(delivered.size(), 1U);
  EXPECT_EQ(delivered[0].request.identifier, "storm");
  EXPECT_EQ(delivered[0].request.content.title, "apns2");

  EXPECT_EQ(provide("com.example.other"), both(R"({"status":400,"reason":"DeviceTokenNotForTopic"})"));
  EXPECT_EQ(run({"device", "uninstall"}).status, 0);
  EXPECT_THAT(provide("com.example.news"),
              testing::MatchesRegex(both(R"(\{"status":410,"reason":"Unregistered","timestamp":[0-9]+\})")));
}

}  // namespace
}  // namespace VorselKelp::agent
