#include "gateway/desktop/Desktops.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <future>
#include <iterator>
#include <vector>

#include "VorselKelpWebPush/Message.h"
#include "posix/net/RawServer.h"
#include "posix/net/RunningServer.h"

namespace gateway {
namespace {

namespace webpush = VorselKelp::webpush;
using VorselKelp::testing_support::RawConnection;
using VorselKelp::testing_support::RawServer;
using VorselKelp::testing_support::Running;

class DesktopsTest : public testing::Test {
 protected:
  std::future<Answer> start(Desktops& desktops, const std::string& endpoint) const {
    auto promise = std::make_shared<std::promise<Answer>>();
    desktops.deliver({.device = webpush::subscriptionText({endpoint, keys_.auth, keys_.publicKey}),
                      .topic = "com.example.app",
                      .identifier = "id-1",
                      .payload = R"({"aps":{}})"},
                     [promise](Answer answer) { promise->set_value(std::move(answer)); });
    return promise->get_future();
  }
  static std::string words(std::future<Answer> future) {
    const auto answer = future.get();
    return std::to_string(answer.status) + " " + std::string(answer.reason) +
           (answer.retryAfter.empty() ? "" : ", " + answer.retryAfter);
  }
  static DesktopOptions desk() { return {.loopback = true}; }
  static void stall(RawConnection& connection) {
    connection.readHead();
    connection.stall();
  }

  const webpush::ReceiverKeys keys_ = *webpush::makeReceiverKeys();
};

TEST_F(DesktopsTest, AnswersWhatThePushServiceAnswers) {
  httplib::Server service;
  std::string body;
  std::atomic<std::size_t> posted = 0;
  service.Post(".*", [&](const httplib::Request& request, httplib::Response& response) {
    ++posted;
    response.status = std::stoi(request.path.substr(1));
    response.set_header("Retry-After", "30");
    if (response.status == 307) response.set_header("Location", "/201");
    if (request.path == "/413/flood") response.set_content(std::string(1 << 20, 'x'), "text/plain");
    body = request.body;
  });
  const Running running(service);
  Desktops desktops(desk());
  EXPECT_TRUE(desktops.takes(webpush::subscriptionText({"https://a.example", keys_.auth, keys_.publicKey})));
  EXPECT_FALSE(desktops.takes(std::string(32, '{'))) << "a phone's, by chance";
  EXPECT_FALSE(desktops.takes(std::string(100, 'x')));
  const std::pair<const char*, const char*> cases[] = {
      {"/200", "200 "},
      {"/201", "200 "},
      {"/404", "410 Unregistered"},
      {"/410", "410 Unregistered"},
      {"/413", "413 PayloadTooLarge"},
      {"/413/flood", "413 PayloadTooLarge"},
      {"/429", "429 TooManyRequests, 30"},
      {"/400", "400 BadDeviceToken"},
      {"/401", "400 BadDeviceToken"},
      {"/403", "400 BadDeviceToken"},
      {"/418", "400 BadDeviceToken"},
      {"/307", "503 ServiceUnavailable, 30"},
      {"/500", "503 ServiceUnavailable, 30"},
      {"/503", "503 ServiceUnavailable, 30"},
  };
  for (const auto& [path, answer] : cases)
    EXPECT_EQ(words(start(desktops, running.url(path))), answer) << path;
  EXPECT_EQ(posted, std::size(cases)) << "what is posted again comes behind what is newer";
  EXPECT_TRUE(webpush::decrypt(body, keys_).ok());
  const auto gone = start(desktops, running.url("/410")).get();
  const auto now = std::chrono::system_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
  EXPECT_NEAR(static_cast<double>(gone.timestamp.value_or(0)), static_cast<double>(now), 60'000);
  EXPECT_EQ(words(start(desktops, "http://127.0.0.1:9/1")), "503 ServiceUnavailable");
}

TEST_F(DesktopsTest, PostsToNoAddressInside) {
  const RawServer inside([](RawConnection&) { ADD_FAILURE() << "somebody has connected"; });
  const auto port = inside.url("").substr(inside.url("").rfind(':'));
  Desktops desktops({});
  for (const char* host : {"127.0.0.1", "localhost", "[::1]", "2130706433", "[::ffff:127.0.0.1]"})
    EXPECT_EQ(words(start(desktops, "https://" + std::string(host) + port + "/")), "400 BadDeviceToken")
        << host;
  Desktops onDesk(desk());
  for (const char* host : {"10.0.0.1", "169.254.169.254", "192.168.0.1", "0.0.0.0", "[fe80::1]"})
    EXPECT_EQ(words(start(onDesk, "https://" + std::string(host) + port + "/")), "400 BadDeviceToken")
        << host;
}

TEST_F(DesktopsTest, WaitsForNobodyForever) {
  const RawServer silent(stall);
  const RawServer dripping([](RawConnection& connection) {
    connection.readHead();
    connection.write("HTTP/1.1 2");
    connection.stall();
  });
  auto options = desk();
  options.patience = 0.2;
  Desktops desktops(options);
  for (const auto* server : {&silent, &dripping})
    EXPECT_EQ(words(start(desktops, server->url())), "503 ServiceUnavailable");
}

TEST_F(DesktopsTest, HasABoundedNumberUnderWay) {
  const RawServer silent(stall);
  const RawServer other(stall);
  auto options = desk();
  options.mostUnderWay = 3;
  options.mostForOne = 2;
  auto desktops = std::make_unique<Desktops>(options);
  std::vector<std::future<Answer>> waiting;
  for (int i = 0; i < 2; ++i) waiting.push_back(start(*desktops, silent.url()));
  EXPECT_EQ(words(start(*desktops, silent.url())), "429 TooManyRequests");
  waiting.push_back(start(*desktops, other.url()));
  EXPECT_EQ(words(start(*desktops, other.url())), "503 ServiceUnavailable");
  desktops = nullptr;
  for (auto& each : waiting) EXPECT_EQ(words(std::move(each)), "503 Shutdown");
}

}  // namespace
}  // namespace gateway
