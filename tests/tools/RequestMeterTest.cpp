#include "brellixctl/fleet/RequestMeter.h"

#include <gtest/gtest.h>

#include "VorselKelpTesting/MemoryURLSession.h"

namespace brellixctl {
namespace {

using VorselKelp::platform::URLRequest;
using VorselKelp::platform::URLResult;
using VorselKelp::testing_platform::MemoryURLSession;

struct Meter {
  std::shared_ptr<MemoryURLSession> session = std::make_shared<MemoryURLSession>();
  const std::shared_ptr<RequestMeter> meter = std::make_shared<RequestMeter>(
      session, 2, [](const URLRequest& request) { return request.url; }, [] {});
  int answered = 0, cancelled = 0;

  void send(const std::string& url) {
    URLRequest request;
    request.url = url;
    meter->send(std::move(request), [this](const URLResult& result) {
      ++answered;
      cancelled += result.error && result.error->code == -999 ? 1 : 0;
    });
  }
};

TEST(RequestMeterTest, HoldsBackWhatIsMoreThanItsConnectionsAndMeasuresEachKind) {
  Meter m;
  for (const char* url : {"http://a/1", "http://a/1", "http://a/2", "http://a/2", "http://a/2"}) m.send(url);
  EXPECT_EQ(m.session->urls().size(), 2u);
  EXPECT_EQ(m.meter->load(), 5u);
  m.session->setRule("/1", {200, "", {}, {}, {}});
  m.session->setRule("/2", {500, "", {}, {}, {}});
  m.session->answerByRules();
  EXPECT_EQ(m.answered, 5);
  EXPECT_EQ(m.meter->load(), 0u);
  auto figures = m.meter->take();
  EXPECT_EQ(figures["http://a/1"].latencies.size(), 2u);
  EXPECT_EQ(figures["http://a/2"].failures, (std::map<std::string, std::size_t>{{"status 500", 3}}));
}

TEST(RequestMeterTest, ClosedItLeavesNoRequestUnanswered) {
  Meter m;
  for (int i = 0; i < 5; ++i) m.send("http://a/x");
  m.session = nullptr;
  m.meter->close();
  EXPECT_EQ(m.answered, 5);
  for (int i = 0; i < 4; ++i) m.send("http://a/late");
  EXPECT_EQ(m.answered, 9);
  EXPECT_EQ(m.cancelled, 9);
  EXPECT_EQ(m.meter->load(), 0u);
}

}  // namespace
}  // namespace brellixctl
