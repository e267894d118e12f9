#include <atomic>
#include <barrier>
#include <set>
#include <thread>

#include "posix/net/RawServer.h"
#include "posix/net/SessionFixture.h"

namespace VorselKelp::testing_support {
namespace {

constexpr const char* okay = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

class SessionLifeTest : public SessionFixture {
 protected:
  static void serve(RawConnection& connection) {
    for (std::string head = connection.readHead(); !head.empty(); head = connection.readHead()) {
      if (head.starts_with("GET /stall")) return connection.stall();
      connection.write(okay);
    }
  }
  RawServer server_{serve};
};

TEST_F(SessionLifeTest, AnswersComeOneAtATimeOnAThreadOfTheirOwn) {
  std::atomic<int> inside = 0;
  std::set<std::thread::id> threads;
  std::promise<void> all;
  int answers = 0;
  constexpr int requests = 300;
  for (int i = 0; i < requests; ++i) {
    session_->send(request(server_.url()), [&](URLResult result) {
      EXPECT_EQ(++inside, 1);
      EXPECT_EQ(result.body, "ok");
      threads.insert(std::this_thread::get_id());
      --inside;
      if (++answers == requests) all.set_value();
    });
  }
  all.get_future().wait();
  EXPECT_EQ(threads.size(), 1u);
  EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST_F(SessionLifeTest, ConnectionsAreUsedAgain) {
  for (int i = 0; i < 5; ++i) {
    auto what = request(server_.url());
    what.discardBody = i % 2 == 0;
    EXPECT_FALSE(fetch(what).error);
  }
  EXPECT_EQ(server_.connections(), 1);
}

TEST_F(SessionLifeTest, ConnectionsOfABurstStayForTheNextOne) {
  constexpr int size = 12;
  std::barrier all(size);  // no answer before each request has its connection
  const RawServer server([&](RawConnection& connection) {
    while (!connection.readHead().empty()) {
      all.arrive_and_wait();
      connection.write(okay);
    }
  });
  for (int round = 0; round < 3; ++round) {
    std::vector<std::future<URLResult>> answers;
    for (int i = 0; i < size; ++i) answers.push_back(start(request(server.url())));
    for (auto& answer : answers) EXPECT_FALSE(answer.get().error);
  }
  EXPECT_EQ(server.connections(), size);
}

TEST_F(SessionLifeTest, ASlowCompletionHoldsUpAnswersButNoTransfers) {
  Gate served, release;
  const RawServer second([&](RawConnection& connection) {
    connection.readHead();
    connection.write(okay);
    served.open();
  });
  std::promise<void> entered;
  session_->send(request(server_.url()), [&](URLResult) {
    entered.set_value();
    release.wait();
  });
  entered.get_future().wait();
  auto next = start(request(second.url()));
  served.wait();
  release.open();
  EXPECT_EQ(next.get().body, "ok");
}

TEST_F(SessionLifeTest, ACompletionMaySendTheNextRequest) {
  std::promise<URLResult> last;
  session_->send(request(server_.url()), [&](URLResult) {
    session_->send(request(server_.url()), [&](URLResult result) { last.set_value(std::move(result)); });
  });
  EXPECT_EQ(last.get_future().get().body, "ok");
}

TEST_F(SessionLifeTest, DestroyingTheSessionCancelsWhatIsUnanswered) {
  Gate arrived;
  const RawServer stalling([&](RawConnection& connection) {
    connection.readHead();
    arrived.open();
    connection.stall();
  });
  std::vector<std::future<URLResult>> answers;
  answers.push_back(start(request(stalling.url())));
  arrived.wait();
  for (int i = 0; i < 400; ++i) answers.push_back(start(request(stalling.url())));  // most of them still wait
  session_.reset();
  for (auto& answer : answers) {
    ASSERT_EQ(answer.wait_for(std::chrono::seconds(0)), std::future_status::ready);
    const auto result = answer.get();
    ASSERT_TRUE(result.error);
    EXPECT_EQ(result.error->code, -999);
  }
}

TEST_F(SessionLifeTest, TheLastReferenceMayGoOnTheDelegateQueue) {
  std::promise<int> cancelled;
  session_->send(request(server_.url("/stall")),
                 [&](URLResult result) { cancelled.set_value(result.error ? result.error->code : 0); });
  // The completion holds the session and lets it go when it is over.
  session_->send(request(server_.url()), [session = session_](URLResult result) mutable {
    EXPECT_EQ(result.body, "ok");
    session.reset();
  });
  session_.reset();
  EXPECT_EQ(cancelled.get_future().get(), -999);
}

TEST_F(SessionLifeTest, WithoutTheLibraryEveryRequestIsAnsweredWithTheReason) {
  posix::URLSessionOptions options;
  options.libraryName = "libof-no-such-name.so.4";
  session_ = posix::makeURLSession(options);
  for (int i = 0; i < 2; ++i) {
    const auto result = fetch(server_.url());
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->description.find("libof-no-such-name"), std::string::npos);
  }
}

}  // namespace
}  // namespace VorselKelp::testing_support
