#include "agent/AgentTest.h"
#include "freedesktop/NotificationServer.h"
#include "VorselKelpPosix/Hex.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::agent {
namespace {

using tool_tests::ToolRun;

/// A gateway, and a distributor behind it that speaks https; both vouched for by the gateway's authority.
class ClientsTest : public AgentTest {
 protected:
  ClientsTest() {
    auto first = std::make_unique<ToolRun>(gatewayCommand({}), file("gateway-errors"));
    const auto identity = JSONAny::decode(first->readLine());
    first = nullptr;
    const auto authority = identity ? tool_tests::at(*identity, "authority") : "none";
    const auto folder = authority.substr(0, authority.rfind('/'));
    ::setenv("NODE_EXTRA_CA_CERTS", authority.c_str(), 1);
    distributor_ = std::make_unique<ToolRun>(
        std::vector<std::string>{DISTRIBUTOR, "--certificate", folder + "/server.pem", "--key",
                                 folder + "/server.key"},
        file("distributor-errors"));
    EXPECT_THAT(distributor_->readLine(), testing::StartsWith("listening on port"));
    gateway_ = std::make_unique<ToolRun>(gatewayCommand({"--push-authority", authority}), file("gateway-errors"));
    gateway = gateway_->readLine();
    subscribe();
  }

  static std::vector<std::string> gatewayCommand(const std::vector<std::string>& options) {
    std::vector<std::string> command{BRELLIXCTL, "--json", "gateway", "--port", "0"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }
  /// What a script of Node's says.
  [[nodiscard]] std::string node(const std::string& script, const std::string& first,
                                 const std::string& second) const {
    ToolRun run({NODE, std::string(CLIENTS) + "/" + script, first, second}, file("node-errors"));
    auto said = run.readAll();
    std::ostringstream errors;
    errors << std::ifstream(file("node-errors")).rdbuf();
    return said + errors.str();
  }

  std::string gateway;  ///< as it describes itself
  freedesktop::NotificationServer server{address};

 private:
  std::unique_ptr<ToolRun> distributor_;
  std::unique_ptr<ToolRun> gateway_;
};

TEST_F(ClientsTest, AServersLibraryForWebPushReachesTheDesktop) {
  EXPECT_EQ(node("send.mjs", webpush::subscriptionText(*subscription), payload("from a server")), "201\n");
  waitUntil([&] { return server.shown.size() == 1; });
  EXPECT_EQ(server.shown[0].title, "from a server");
  EXPECT_EQ(server.shown[0].body, "text");
}

TEST_F(ClientsTest, ProvidersReachTheDesktopThroughTheGateway) {
  const auto token = posix::hexOf(webpush::subscriptionText(*subscription));
  EXPECT_EQ(node("provide.mjs", gateway, token), "{\"status\":200}\n{\"status\":200}\n");
  waitUntil([&] { return server.shown.size() == 2; });
  EXPECT_EQ(server.shown[0].title, "@parse/node-apn");
  EXPECT_EQ(server.shown[1].title, "apns2");
  EXPECT_EQ(server.shown[1].number, server.shown[0].number) << "it takes the place of the first";
}

}  // namespace
}  // namespace VorselKelp::agent
