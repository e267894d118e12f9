// A fleet whose notifications come from outside, by the provider protocol.

#include <fstream>
#include <future>
#include <set>
#include <thread>

#include "VorselKelpPosix/CurlURLSession.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

class CampaignTest : public ToolTest {
 protected:
  void SetUp() override { startServer(); }

  /// Devices that wait for notifications.
  void startFleet(const std::string& devices, const std::string& pushes) {
    ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    fleet_ = std::make_unique<ToolRun>(
        std::vector<std::string>{BRELLIXCTL, "fleet", "--json", "--gateway", "--open", "--port", "0",
                                 "--devices", devices, "--pushes", pushes, "--server", url_, "--opened",
                                 "100", "--tokens", folder_ / "tokens"},
        folder_ / "errors");
    const auto told = JSONAny::decode(fleet_->readLine());
    ASSERT_TRUE(told.ok()) << errorText();
    gateway_ = at(*told, "url");
    posix::URLSessionOptions options;
    options.certificateFile = at(*told, "authority");
    session_ = posix::makeURLSession(std::move(options));
    std::ifstream tokens(folder_ / "tokens");
    for (std::string token; std::getline(tokens, token);) tokens_.push_back(token);
  }
  int send(const std::string& token, std::string payload) {
    if (const auto found = payload.find("SERVER"); found != std::string::npos)
      payload.replace(found, 6, url_);
    platform::URLRequest request;
    request.method = "POST";
    request.url = gateway_ + "/3/device/" + token;
    request.headers = {{"apns-topic", "com.example.news"}, {"apns-push-type", "alert"}};
    request.body = std::move(payload);
    std::promise<int> status;
    session_->send(std::move(request), [&](const platform::URLResult& result) {
      status.set_value(result.response ? result.response->statusCode : result.error->code);
    });
    return status.get_future().get();
  }
  /// What the fleet tells of the campaign in the end.
  JSONAny campaign() {
    const auto report = JSONAny::decode(fleet_->readAll());
    EXPECT_EQ(fleet_->wait(), 0) << errorText();
    if (!report) return {};
    return report->find("phases")->as<JSONAny::List>()->back();
  }

  std::unique_ptr<ToolRun> fleet_;
  std::shared_ptr<platform::URLSession> session_;
  std::string gateway_;
  std::vector<std::string> tokens_;
};

constexpr const char* tracked = R"({"aps": {"mutable-content": 1, "alert":
    {"title": "Storm", "v": "SERVER/track/view", "n": {"body": "b"}}}})";

TEST_F(CampaignTest, EachDeviceDoesWhatItsPhoneWould) {
  startFleet("3", "2");
  ASSERT_EQ((std::set<std::string>(tokens_.begin(), tokens_.end()).size()), 3u);
  for (const auto& token : tokens_) EXPECT_EQ(send(token, tracked), 200);
  EXPECT_EQ(send(std::string(64, '0'), tracked), 400);
  EXPECT_EQ(send(tokens_[0], R"({"aps": {"alert": {"title": "as it came"}}})"), 200);
  EXPECT_EQ(send(tokens_[1], R"({"aps": {"content-available": 1}})"), 200);
  EXPECT_EQ(send(tokens_[2], R"({"aps": {"mutable-content": 1, "alert": {"title": 7}}})"), 200)
      << "its extension would stop";

  const auto told = campaign();
  EXPECT_EQ(at(told, "steps"), "6");
  const auto counted = [&](const char* latency) {
    return at(*told.find("latencies")->find(latency), "count");
  };
  EXPECT_EQ(counted("arrival"), "6");
  EXPECT_EQ(counted("delivery"), "5");
  EXPECT_EQ(counted("tracker"), "3");
  EXPECT_EQ(at(*told.find("requests")->find("view tracker"), "count"), "3");
  const auto seen = requests();
  EXPECT_EQ(std::ranges::count(seen, "GET /track/view"), 3);
}

TEST_F(CampaignTest, TellsWhatCameWhenTheUserEndsIt) {
  startFleet("1", "1");
  fleet_->interrupt();
  EXPECT_EQ(at(*campaign().find("requests")->find("all"), "perSecond"), "0.0") << "nothing came";
  startFleet("2", "1");
  EXPECT_EQ(send(tokens_.back(), tracked), 200);
  while (std::ranges::count(requests(), "GET /track/view") == 0) std::this_thread::yield();
  fleet_->interrupt();
  EXPECT_EQ(at(campaign(), "steps"), "1");
}

}  // namespace
}  // namespace VorselKelp::tool_tests
