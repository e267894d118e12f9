#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "ads/AdRecords.h"
#include "core/TestCore.h"
#include "facade/WatchedDefaults.h"
#include "net/ServerAnswers.h"
#include "net/VorselRequest.h"

namespace VorselKelp {
namespace {

using platform::HTTPHeader;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing_platform::ServerAnswer;

ActivityBody unencodable() {
  ActivityBody body;
  body.app = "\xff";
  return body;
}

class RequestTest : public testing::Test {
 protected:
  RequestTest() {
    store("vs_activity_url", "https://c.example/v2/activity?type=mobile");
    store("vs_user_url", "https://c.example/v2/users?type=mobile");
    store("vs_config_url", "https://t.example/tag");
  }
  ~RequestTest() override { session_.cancelAll(); }

  void store(const char* key, const std::string& text) { core_.app.standardDomain->setObject(key, {text}); }
  void setCounter(std::int64_t value) { core_.app.standardDomain->setObject("vs_openCounter", {value}); }
  std::optional<std::int64_t> counter() const { return core_.integer("vs_openCounter"); }
  std::vector<std::string> lines() const { return core_.app.console->texts(); }

  // Completions write what they get among the lines, which so tell what came first.
  void note(const std::string& text) { core_.app.console->print("> " + text); }
  /// The status and the opens owed at that time, which only an open changes.
  VorselRequest::Completion noting() {
    return [this](const VorselRequest::Response& response, const std::optional<Error>& error) {
      note((response ? std::to_string(response->statusCode) : "none") + (error ? " error" : "") +
           (counter() ? ", owed " + std::to_string(*counter()) : ""));
    };
  }
  VorselRequest::PushCompletion notingPush() {
    return [this](bool success, const VorselRequest::Response& response, const std::optional<Error>& error) {
      note((success ? "success " : "") + (response ? std::to_string(response->statusCode) : "none") +
           (error ? " error" : ""));
    };
  }

  TestCore core_;
  testing_platform::MemoryURLSession& session_ = *core_.app.urlSession;
  VorselRequest requests_{core_.context};
};

TEST_F(RequestTest, PostsLookAlike) {
  requests_.sendActivityInstall({}, noting());
  requests_.sendActivityOpen({}, noting());
  requests_.sendActivityLocationEvent({}, noting());
  requests_.sendPushData({}, notingPush());
  ASSERT_EQ(session_.requests().size(), 4u);
  for (const auto& request : session_.requests()) {
    EXPECT_EQ(request.method, "POST");
    EXPECT_THAT(request.headers, ElementsAre(HTTPHeader{"Content-Type", "application/json"}));
    EXPECT_EQ(request.timeout, 60);
    EXPECT_EQ(request.sessionTimeout, 10);
    EXPECT_EQ(request.responseLimit, std::size_t{64} << 10);
    EXPECT_TRUE(request.discardBody);
    EXPECT_TRUE(request.body.starts_with("{\"ts_current\":0,")) << request.body;
  }
  EXPECT_THAT(
      session_.urls(),
      ElementsAre("https://c.example/v2/activity?type=mobile", "https://c.example/v2/activity?type=mobile",
                  "https://c.example/v2/activity?type=mobile", "https://c.example/v2/users?type=mobile"));
}

TEST_F(RequestTest, WithoutAUsableUrlNothingHappens) {
  setCounter(2);
  for (const char* url : {"", " ", "https://c example/", "https://c.example/\r\n"}) {
    for (const char* key : {"vs_activity_url", "vs_user_url", "vs_config_url"}) store(key, url);
    requests_.sendActivityInstall({}, noting());
    requests_.sendActivityOpen({}, noting());
    requests_.sendActivityLocationEvent({}, noting());
    requests_.sendPushData({}, notingPush());
    requests_.fetchAutoconfig("key", [this](const platform::URLResult&) { note("document"); });
  }
  for (const char* key : {"vs_activity_url", "vs_user_url", "vs_config_url"})
    core_.app.standardDomain->removeObject(key);
  requests_.sendActivityOpen({}, noting());
  requests_.fetchAutoconfig("key", [this](const platform::URLResult&) { note("document"); });
  EXPECT_THAT(session_.requests(), IsEmpty());
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_EQ(counter(), 2);
}

TEST_F(RequestTest, ABodyWithoutAFormIsReportedAndLeavesTheRequestBodiless) {
  PushBody push;
  push.token = "\xff";
  requests_.sendActivityInstall(unencodable(), noting());
  requests_.sendActivityOpen(unencodable(), noting());
  requests_.sendActivityLocationEvent(unencodable(), noting());
  requests_.sendPushData(push, notingPush());
  ASSERT_EQ(session_.requests().size(), 4u);
  for (const auto& request : session_.requests()) {
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.body, "");
  }
  const auto printed = lines();
  ASSERT_EQ(printed.size(), 4u);
  EXPECT_THAT(printed[0], testing::StartsWith("sendActivityInstall error: "));
  EXPECT_THAT(printed[1], testing::StartsWith("sendActivityOpen "));
  EXPECT_THAT(printed[2], testing::StartsWith("sendActivityLocationEvent "));
  EXPECT_THAT(printed[3], testing::StartsWith("sendPushData "));
}

TEST_F(RequestTest, InstallAndLocationHandTheOutcomeOn) {
  requests_.sendActivityInstall({}, noting());
  EXPECT_THAT(lines(), ElementsAre("Install sent"));
  requests_.sendActivityInstall({}, noting());
  requests_.sendActivityLocationEvent({}, noting());
  requests_.sendActivityLocationEvent({}, noting());
  core_.app.console->clear();
  session_.answer(0, status(503));
  session_.answer(1, ServerAnswer::failure("no network"));
  session_.answer(2, status(404));
  session_.answer(3, ServerAnswer::failure("reset"));
  EXPECT_THAT(lines(), ElementsAre("> 503", "no network", "> none error", "> 404", "reset", "> none error"));
}

TEST_F(RequestTest, PushDataIsPrintedAndNotJudged) {
  for (int i = 0; i < 3; ++i) requests_.sendPushData({}, notingPush());
  EXPECT_THAT(lines(), testing::Each(testing::StartsWith("sendPushData {\"ts_current\":0,")));
  core_.app.console->clear();
  session_.answer(0, status(201));
  session_.answer(1, status(500));
  session_.answer(2, ServerAnswer::failure("down"));
  EXPECT_THAT(lines(), ElementsAre("> success 201", HasSubstr("HTTP 201"), "> success 500",
                                   HasSubstr("HTTP 500"), "> none error"))
      << "each response; an error is the caller's to tell";
}

TEST_F(RequestTest, OpensThatFailedAreMadeUpFor) {
  requests_.sendActivityOpen({}, noting());
  EXPECT_EQ(session_.requests().size(), 1u);
  EXPECT_EQ(counter(), 0);

  setCounter(3);
  requests_.sendActivityOpen({}, noting());
  ASSERT_EQ(session_.requests().size(), 5u);
  EXPECT_EQ(counter(), 0);
  for (std::size_t i = 1; i < 5; ++i) EXPECT_EQ(session_.request(i).body, session_.request(0).body);

  session_.answer(1, ServerAnswer::failure("x"));
  session_.answer(2, ServerAnswer::failure("x"));
  EXPECT_EQ(counter(), 2);
  session_.answer(3, status(200));
  EXPECT_EQ(counter(), 2) << "200 is no acceptance";
  session_.answer(4, status(201));
  EXPECT_EQ(counter(), 1);
  session_.answer(0, status(201));
  EXPECT_EQ(counter(), 1) << "the last one owed stays";
  EXPECT_THAT(lines(),
              ElementsAre("> none error, owed 1", "Request ERROR", "> none error, owed 2", "Request ERROR",
                          "> 200, owed 2", "Open sent", "> 201, owed 1", "Open sent", "> 201, owed 1"));
}

TEST_F(RequestTest, AThousandOwedOpensAtMostGoOutWithOne) {
  setCounter(1200);
  requests_.sendActivityOpen({}, noting());
  EXPECT_EQ(session_.requests().size(), 1001u);
  EXPECT_EQ(counter(), 200);
}

TEST_F(RequestTest, AFailureThatIsCountedMeanwhileHidesNoOwedOpen) {
  setCounter(1);
  const auto defaults = std::make_shared<BrellixPush::WatchedDefaults>(core_.app.userDefaults);
  core_.app.platform()->userDefaults = defaults;
  defaults->watched->afterTransaction = [this] { setCounter(1); };
  requests_.sendActivityOpen({}, noting());
  EXPECT_EQ(session_.requests().size(), 2u);
}

TEST_F(RequestTest, ACounterOfZeroStaysAndAnotherTypeCountsAsNone) {
  core_.app.standardDomain->setObject("vs_openCounter", {std::string("7")});
  requests_.sendActivityOpen({}, noting());
  ASSERT_EQ(session_.requests().size(), 1u);
  session_.answer(0, status(201));
  EXPECT_EQ(counter(), 0);
}

TEST_F(RequestTest, ATrackingGetDecodesWhatItCan) {
  const auto get = [&](const std::string& url) {
    requests_.sendTrackingGet<AdexObject>(
        url, [&](const std::optional<AdexObject>& ad, const std::optional<Error>&) {
          note(!ad ? "none" : ad->creative() ? ad->creative()->title.value_or("") : "no creative");
        });
  };
  get("https://ad.example/x?a=b");
  get("https://ad.example/x");
  get("");
  get("https://a d.example/");
  get("https://ad.example/x?c");
  get("https://ad.example/x?d");
  EXPECT_THAT(
      session_.urls(),
      ElementsAre("https://ad.example/x?a=b&ver=2.0.0", "https://ad.example/x&ver=2.0.0", "&ver=2.0.0",
                  "https://ad.example/x?c&ver=2.0.0", "https://ad.example/x?d&ver=2.0.0"));
  for (const auto& request : session_.requests()) {
    EXPECT_EQ(request.method, "GET");
    EXPECT_THAT(request.headers, IsEmpty());
    EXPECT_EQ(request.timeout, 10);
  }
  ServerAnswer answer;
  answer.body = R"({"items":[{"md":{"title":"Ad"}}]})";
  session_.answer(0, answer);
  answer.body = R"({"items":[{"md":{"title":1}}]})";
  session_.answer(1, answer);
  session_.answer(2, answer);
  session_.answer(3, status(204));
  session_.answer(4, ServerAnswer::failure("down"));
  EXPECT_THAT(lines(),
              ElementsAre("> Ad", "> none", "unsupported URL", "> none", "> none", "down", "> none"));
}

TEST_F(RequestTest, TrackersGoToTheWebAlone) {
  for (const char* url : {"https://a.example/t", "HTTP://a.example/t?x", "file:///etc/passwd",
                          "//a.example/t", "t", "", " https://a.example/", "https://a.example/\n",
                          "ftp://a.example/t", "https:///t", "https://a.example/?t[]={a|b} \u00e9"})
    requests_.fireTracker(url);
  EXPECT_THAT(session_.urls(), ElementsAre("https://a.example/t", "HTTP://a.example/t?x",
                                           "https://a.example/?t%5B%5D=%7Ba%7Cb%7D%20%C3%A9"));
  for (const auto& request : session_.requests()) EXPECT_EQ(request.method + request.body, "GET");
  session_.answer(0, ServerAnswer::failure("down"));
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(RequestTest, TheFirstConfigurationFetchIsConditionalToo) {
  requests_.fetchAutoconfig("key-1", [](const platform::URLResult&) {});
  store("vs_last_modified", "Sun, 15 Nov 2026 02:24:43 GMT");
  requests_.fetchAutoconfig("a/b c", [](const platform::URLResult&) {});
  const auto first = session_.request(0);
  EXPECT_EQ(first.url, "https://t.example/tag/key-1.json");
  EXPECT_EQ(first.method, "GET");
  EXPECT_EQ(first.timeout, 60);
  EXPECT_EQ(first.sessionTimeout, std::nullopt);
  EXPECT_EQ(first.responseLimit, std::size_t{1} << 20);
  EXPECT_THAT(first.headers, ElementsAre(HTTPHeader{"If-Modified-Since", "Fri, 12 Jan 2024 09:42:01 GMT"}));
  EXPECT_THAT(session_.request(1).headers,
              ElementsAre(HTTPHeader{"If-Modified-Since", "Sun, 15 Nov 2026 02:24:43 GMT"}));
  EXPECT_TRUE(session_.request(1).url.starts_with("https://t.example/tag/")) << session_.request(1).url;
}

}  // namespace
}  // namespace VorselKelp
