#include <netinet/in.h>

#include <chrono>
#include <vector>

#include "posix/net/RawServer.h"
#include "posix/net/SessionFixture.h"

namespace VorselKelp::testing_support {
namespace {

class SessionOptionsTest : public SessionFixture {
 protected:
  static void serve(RawConnection& connection) {
    for (std::string head = connection.readHead(); !head.empty(); head = connection.readHead()) {
      const bool stalls = head.starts_with("GET /stall");
      connection.write(std::string("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\no") + (stalls ? "" : "k"));
      if (stalls) return connection.stall();
    }
  }
  RawServer server_{serve};
};

TEST_F(SessionOptionsTest, ConnectsOnlyWhereItMay) {
  posix::URLSessionOptions options;
  bool may = true;
  int asked = 0;
  options.mayConnect = [&](const sockaddr& address) {
    ++asked;
    const auto& internet = reinterpret_cast<const sockaddr_in&>(address);
    EXPECT_TRUE(address.sa_family != AF_INET || ntohl(internet.sin_addr.s_addr) == INADDR_LOOPBACK);
    return may;
  };
  session_ = posix::makeURLSession(options);
  ::setenv("http_proxy", "http://127.0.0.1:9", 1);
  ::unsetenv("no_proxy");
  EXPECT_EQ(fetch(server_.url()).body, "ok") << "a proxy would be asked in its place";
  ::unsetenv("http_proxy");
  ::setenv("no_proxy", "*", 1);
  EXPECT_EQ(asked, 1);
  may = false;
  session_ = posix::makeURLSession(options);
  auto name = server_.url();
  name.replace(name.find("127.0.0.1"), 9, "localhost");
  for (const auto& url : {server_.url(), name}) {
    const auto result = fetch(url);
    ASSERT_TRUE(result.error) << url;
    EXPECT_EQ(result.error->code, posix::addressRefused) << result.error->description;
  }
  EXPECT_EQ(server_.connections(), 1);
}

TEST_F(SessionOptionsTest, GivesARequestUpThatTakesTooLong) {
  posix::URLSessionOptions options;
  options.longestRequest = 0.2;
  session_ = posix::makeURLSession(options);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(fetch(server_.url("/stall")).error->description, "The request timed out");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  auto head = request(server_.url("/stall"));
  head.discardBody = true;
  EXPECT_EQ(fetch(head).response->statusCode, 200) << "nothing else was wanted";
}

TEST_F(SessionOptionsTest, SharesAServersConnections) {
  posix::URLSessionOptions options;
  options.connectionsToServer = 2;
  options.requestsAtOnce = 50;
  session_ = posix::makeURLSession(options);
  std::vector<std::future<URLResult>> answers;
  for (int i = 0; i < 100; ++i) answers.push_back(start(request(server_.url())));
  for (auto& answer : answers) EXPECT_EQ(answer.get().body, "ok");
  EXPECT_LE(server_.connections(), 2);
}

}  // namespace
}  // namespace VorselKelp::testing_support
