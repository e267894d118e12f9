#include <chrono>

#include "posix/net/RawServer.h"
#include "posix/net/SessionFixture.h"

namespace VorselKelp::testing_support {
namespace {

class HostileServerTest : public SessionFixture {
 protected:
  void expectError(const std::function<void(RawConnection&)>& handler, const char* what) {
    const RawServer server(handler);
    auto asked = request(server.url());
    asked.timeout = 10;
    const auto begin = std::chrono::steady_clock::now();
    const auto result = fetch(asked);
    EXPECT_TRUE(result.error) << what;
    EXPECT_FALSE(result.response || result.body) << what;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(8)) << what;
    session_ = posix::makeURLSession();
  }
};

TEST_F(HostileServerTest, BrokenAnswersAreErrors) {
  const auto answering = [](std::string bytes) {
    return [bytes = std::move(bytes)](RawConnection& connection) {
      connection.readHead();
      connection.write(bytes);
    };
  };
  expectError(answering(""), "nothing");
  expectError(answering("no http at all\r\n\r\n"), "garbage");
  expectError(answering("HTTP/1.1 200 OK\r\nContent-Le"), "half a head");
  expectError(answering("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\nshort"), "fewer bytes than promised");
  expectError(answering("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nx"), "a negative length");
  expectError(answering("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nx"), "a broken chunk");
  expectError(answering("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nxxxx"),
              "no gzip");
  expectError(answering("HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n"), "an interim answer alone");
  expectError(answering("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n"), "another protocol");
  expectError(
      [](RawConnection& connection) {
        connection.readHead();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\nx");
        connection.reset();
      },
      "a reset");
}

TEST_F(HostileServerTest, EndlessAnswersAreCutOff) {
  const auto endless = [](std::string head, std::string piece) {
    return [head = std::move(head), piece = std::move(piece)](RawConnection& connection) {
      connection.readHead();
      connection.write(head);
      for (int i = 0; i < 2'000'000 && connection.write(piece); ++i) {
      }
    };
  };
  const std::string big(10'000, 'x');
  expectError(endless("HTTP/1.1 200 OK\r\n\r\n", big), "a body without end");
  expectError(endless("HTTP/1.1 200 OK\r\nContent-Length: 100000000\r\n\r\n", big), "100 MB");
  expectError(endless("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n", "2710\r\n" + big + "\r\n"),
              "chunks");
  expectError(endless("HTTP/1.1 302 Found\r\nLocation: /x\r\n\r\n", big), "the body of a redirect");
  expectError(endless("HTTP/1.1 200 OK\r\n", "X-Header: some value\r\n"), "headers");
  expectError(endless("HTTP/1.1 200 OK\r\nX-Header: ", big), "one header");
  expectError(endless("", "HTTP/1.1 100 Continue\r\n\r\n"), "interim answers");
}

TEST_F(HostileServerTest, TheResponseStandsWhateverBecomesOfABodyThatNobodyWants) {
  const struct {
    const char* bytes;
    std::optional<int> status;
  } cases[] = {{"HTTP/1.1 201 Created\r\nContent-Length: 50\r\n\r\nshort", 201},
               {"HTTP/1.1 201 Created\r\nContent-Length: 50\r\n\r\nlonger than the limit", 201},
               {"HTTP/1.1 500 No\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nx", 500},
               {"HTTP/1.1 201 Created\r\nContent-Length: 50\r\n", std::nullopt},
               {"HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\n\r\n", std::nullopt},
               {"HTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n", std::nullopt}};
  for (const auto& c : cases) {
    const RawServer server([&](RawConnection& connection) {
      connection.readHead();
      connection.write(c.bytes);
    });
    auto unwanted = request(server.url());
    unwanted.method = "POST";
    unwanted.discardBody = true;
    unwanted.responseLimit = 10;
    const auto result = fetch(unwanted);
    EXPECT_EQ(result.response ? std::optional(result.response->statusCode) : std::nullopt, c.status)
        << c.bytes;
    EXPECT_EQ(result.error.has_value(), !c.status) << c.bytes;
    EXPECT_FALSE(result.body) << c.bytes;
  }
}

TEST_F(HostileServerTest, MoreBytesThanPromisedAreNotPartOfTheBody) {
  const RawServer server([](RawConnection& connection) {
    while (!connection.readHead().empty())
      connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nokHTTP/1.1 500 No\r\n\r\n");
  });
  for (int i = 0; i < 2; ++i) {
    const auto result = fetch(server.url());
    ASSERT_FALSE(result.error) << result.error->description;
    EXPECT_EQ(result.response->statusCode, 200);
    EXPECT_EQ(result.body, "ok");
  }
}

TEST_F(HostileServerTest, AStallIsATimeOutWhereverItHappensAndDelaysNobodyElse) {
  const RawServer stalling([](RawConnection& connection) {
    const auto head = connection.readHead();
    if (head.starts_with("GET /head")) connection.write("HTTP/1.1 200 OK\r\n");
    if (head.starts_with("GET /body")) connection.write("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nx");
    connection.stall();
  });
  const RawServer healthy([](RawConnection& connection) {
    connection.readHead();
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
  });
  std::vector<std::future<URLResult>> stalled;
  for (const char* path : {"/", "/head", "/body"}) {
    auto slow = request(stalling.url(path));
    slow.timeout = 1;
    stalled.push_back(start(slow));
    slow.timeout = 60;
    slow.sessionTimeout = 1;
    stalled.push_back(start(slow));
  }
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(fetch(healthy.url()).body, "ok");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900));
  for (auto& one : stalled) {
    const auto result = one.get();
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->description.find("timed out"), std::string::npos) << result.error->description;
  }
  const auto took = std::chrono::steady_clock::now() - begin;
  EXPECT_GT(took, std::chrono::milliseconds(900));
  EXPECT_LT(took, std::chrono::seconds(5));
}

TEST_F(HostileServerTest, ATrickleIsNoStall) {
  const RawServer server([](RawConnection& connection) {
    connection.readHead();
    connection.write("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n");
    for (int i = 0; i < 6; ++i) {
      std::promise<void> unkept;
      unkept.get_future().wait_for(std::chrono::milliseconds(250));  // the server's pace
      connection.write("x");
    }
  });
  auto slow = request(server.url());
  slow.timeout = 1;
  const auto result = fetch(slow);
  ASSERT_FALSE(result.error) << result.error->description;
  EXPECT_EQ(result.body, "xxxxxx");
}

}  // namespace
}  // namespace VorselKelp::testing_support
