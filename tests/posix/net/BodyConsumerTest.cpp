#include <httplib.h>

#include <atomic>
#include <thread>
#include <vector>

#include "posix/net/RawServer.h"
#include "posix/net/SessionFixture.h"

namespace VorselKelp::testing_support {
namespace {

/// What a consumer was given, and when it was destroyed.
struct Taken {
  std::string bytes;
  std::size_t pieces = 0;
  std::thread::id thread;
};

class BodyConsumerTest : public SessionFixture {
 protected:
  /// The body into `taken_`; pieces from the one of number `refused` on are refused.
  URLRequest consuming(std::string url, std::size_t refused = SIZE_MAX) {
    auto what = request(std::move(url));
    taken_ = std::make_shared<Taken>();
    what.bodyConsumer = [taken = taken_, refused](std::string_view piece) -> Status {
      taken->thread = std::this_thread::get_id();
      if (taken->pieces++ >= refused) return Error{"the disk is full", 28};
      taken->bytes += piece;
      return Done{};
    };
    return what;
  }
  /// Fetches, and expects the completion to find the consumer gone.
  URLResult consume(URLRequest what) {
    std::promise<URLResult> promise;
    session_->send(std::move(what), [&](URLResult result) {
      EXPECT_EQ(taken_.use_count(), 1);
      promise.set_value(std::move(result));
    });
    return promise.get_future().get();
  }
  static std::string head(std::size_t length, const std::string& more = "") {
    return "HTTP/1.1 200 OK\r\n" + more + "Content-Length: " + std::to_string(length) + "\r\n\r\n";
  }

  std::shared_ptr<Taken> taken_;
};

TEST_F(BodyConsumerTest, GetsTheFinalBodyInOrderAndNothingOfARedirects) {
  std::string body;
  for (int i = 0; body.size() < 3'000'000; ++i) body += std::to_string(i) + " ";
  const RawServer server([&](RawConnection& connection) {
    for (auto asked = connection.readHead(); !asked.empty(); asked = connection.readHead()) {
      if (asked.starts_with("GET /moved"))
        connection.write("HTTP/1.1 302 Found\r\nLocation: /\r\nContent-Length: 5\r\n\r\nmoved");
      else if (asked.starts_with("GET /gone"))
        connection.write("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\ngone");
      else if (asked.starts_with("GET /none"))
        connection.write("HTTP/1.1 204 No Content\r\n\r\n");
      else
        connection.write(head(body.size()) + body);
    }
  });
  for (const char* path : {"/", "/moved"}) {
    auto asked = consuming(server.url(path));
    asked.responseLimit = body.size();
    const auto result = consume(std::move(asked));
    ASSERT_FALSE(result.error) << result.error->description;
    EXPECT_EQ(result.body, "");
    EXPECT_TRUE(taken_->bytes == body);
    EXPECT_GT(taken_->pieces, 10u);
    EXPECT_NE(taken_->thread, std::this_thread::get_id());
  }
  const auto gone = consume(consuming(server.url("/gone")));
  EXPECT_EQ(gone.response->statusCode, 404);
  EXPECT_EQ(taken_->bytes, "gone") << "what a status means is the caller's to know";
  EXPECT_EQ(consume(consuming(server.url("/none"))).body, std::nullopt);
  EXPECT_EQ(taken_->pieces, 0u);
  auto unwanted = consuming(server.url("/gone"));
  unwanted.discardBody = true;
  EXPECT_FALSE(consume(std::move(unwanted)).error);
  EXPECT_EQ(taken_->pieces, 0u);
}

TEST_F(BodyConsumerTest, NeverGetsMoreThanTheLimit) {
  httplib::Server server;
  server.Get("/", [](const httplib::Request&, httplib::Response& response) {
    response.set_content(std::string(1'000'000, 'x'), "text/plain");
  });
  server.set_keep_alive_max_count(1);
  const int port = server.bind_to_any_port("127.0.0.1");
  std::thread thread([&] { server.listen_after_bind(); });
  while (!server.is_running()) std::this_thread::yield();
  for (const char* encoding : {"identity", "gzip"}) {
    auto asked = consuming("http://127.0.0.1:" + std::to_string(port) + "/");
    asked.headers = {{"Accept-Encoding", encoding}};
    asked.responseLimit = 999'999;
    const auto result = consume(std::move(asked));
    EXPECT_TRUE(result.error && !result.response && !result.body) << encoding;
    EXPECT_LT(taken_->bytes.size(), 1'000'000u) << encoding;
  }
  server.stop();
  thread.join();
}

TEST_F(BodyConsumerTest, ARefusedPieceEndsTheRequestWithTheConsumersError) {
  const RawServer server([](RawConnection& connection) {
    connection.readHead();
    connection.write(head(100'000'000));
    const std::string piece(100'000, 'x');
    while (connection.write(piece)) {
    }
  });
  for (const std::size_t refused : {0, 2}) {
    auto asked = consuming(server.url(), refused);
    asked.responseLimit = 200'000'000;
    const auto result = consume(std::move(asked));
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->description, "the disk is full");
    EXPECT_EQ(result.error->code, 28);
    EXPECT_FALSE(result.response || result.body);
    EXPECT_EQ(taken_->pieces, refused + 1) << "nothing comes after a refusal";
  }
}

TEST_F(BodyConsumerTest, ABodyCutOffInTheMiddleIsAnErrorAfterItsBeginning) {
  std::atomic<bool> stall = false;
  const RawServer server([&](RawConnection& connection) {
    connection.readHead();
    connection.write(head(50) + "beginning");
    if (stall) connection.stall();
  });
  const auto broken = consume(consuming(server.url()));
  EXPECT_TRUE(broken.error && !broken.response && !broken.body);
  EXPECT_EQ(taken_->bytes, "beginning");

  stall = true;
  auto slow = consuming(server.url());
  slow.timeout = 1;
  EXPECT_TRUE(consume(std::move(slow)).error);
  EXPECT_EQ(taken_->bytes, "beginning");
}

TEST_F(BodyConsumerTest, IsLetGoWhenTheSessionEnds) {
  Gate arrived;
  const RawServer server([&](RawConnection& connection) {
    connection.readHead();
    connection.write(head(50) + "beginning");
    arrived.open();
    connection.stall();
  });
  auto asked = consuming(server.url());
  int answers = 0;
  const auto cancelled = [&](const URLResult& result) {
    EXPECT_EQ(result.error->code, -999);
    ++answers;
  };
  for (int i = 0; i < 300; ++i) session_->send(asked, cancelled);  // not all of them are begun at once
  asked = {};
  arrived.wait();
  session_.reset();
  EXPECT_EQ(answers, 300);
  EXPECT_EQ(taken_.use_count(), 1);

  posix::URLSessionOptions options;
  options.libraryName = "libof-no-such-name.so.4";
  session_ = posix::makeURLSession(options);
  EXPECT_TRUE(consume(consuming(server.url())).error);
  session_ = posix::makeURLSession();
  EXPECT_TRUE(consume(consuming("file:///etc/passwd")).error);
}

}  // namespace
}  // namespace VorselKelp::testing_support
