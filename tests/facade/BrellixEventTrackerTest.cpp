#include "facade/BrellixEventTracker.h"

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "core/TestCore.h"
#include "facade/WatchedDefaults.h"
#include "kellp/KellpTest.h"

namespace BrellixPush {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using VorselKelp::status;
using VorselKelp::platform::DefaultsValue;
using VorselKelp::platform::TextList;
using VorselKelp::testing_platform::MemoryPlatform;
using VorselKelp::testing_platform::ServerAnswer;

constexpr const char* sentEvents = "com.brellix.push.sent_events";

struct EventTrackerTest : testing::Test {
  std::optional<DefaultsValue> sent() const { return core.app.standardDomain->object(sentEvents); }
  std::vector<std::string> lines() const { return core.app.console->texts(); }

  VorselKelp::TestCore core;
  VorselKelp::testing_platform::MemoryURLSession& session = *core.app.urlSession;
  BrellixEventTracker tracker{core.context, "42", "news"};
};

TEST_F(EventTrackerTest, AnEventIsOneRequestWithItsItemsInOrder) {
  tracker.send(askedEvent());
  const std::string common =
      "https://events.brellix.example?cat=webpush&pid=42&src=news&v=2.0.0&platform_type=ios";
  EXPECT_THAT(session.urls(), ElementsAre(common + "&action=ask"));
  EXPECT_EQ(session.request(0).method, "GET");
  EXPECT_EQ(session.request(0).timeout, 5);
  EXPECT_FALSE(session.request(0).sessionTimeout);
  EXPECT_EQ(sent(), DefaultsValue{TextList{"action=ask"}}) << "before any answer";
  tracker.send(allowedEvent());
  tracker.send(blockedEvent());
  EXPECT_EQ(session.urls()[1], common + "&action=allow");
  EXPECT_EQ(session.urls()[2], common + "&action=block");

  core.app.bundle->setLibrary("CFBundleShortVersionString", std::nullopt);
  BrellixEventTracker(core.context, "a&b=c d", "ä#?").send({{"n&m", "1=2"}, {"action", "x"}});
  EXPECT_EQ(session.urls()[3],
            "https://events.brellix.example?cat=webpush&pid=a%26b%3Dc%20d&src=%C3%A4%23%3F&v=unknown"
            "&platform_type=ios&action=x&n%26m=1%3D2");

  auto values = core.app.device->hardware->values();
  values.systemFamily = "Linux";
  core.app.device->hardware->set(values);
  tracker.send({{"action", "y"}});
  EXPECT_TRUE(session.urls()[4].ends_with("&platform_type=linux&action=y")) << session.urls()[4];
}

TEST_F(EventTrackerTest, AnEventIsSentOncePerInstallationWhateverBecameOfIt) {
  const auto watched = std::make_shared<WatchedDefaults>(core.app.userDefaults);
  core.app.platform()->userDefaults = watched;
  tracker.send(askedEvent());
  session.answer(0, ServerAnswer::failure("down"));
  watched->watched->reads = watched->watched->others = 0;
  tracker.send(askedEvent());
  EXPECT_EQ(watched->watched->reads, 1);
  EXPECT_EQ(watched->watched->others, 0) << "one read is all that a sent event costs";
  BrellixEventTracker(core.context, "43", "other").send(askedEvent());
  MemoryPlatform relaunched(core.app.device);
  const auto again = std::make_shared<VorselKelp::CoreContext>(relaunched.platform());
  BrellixEventTracker(again, "42", "news").send(askedEvent());
  EXPECT_EQ(session.urls().size(), 1u);
  EXPECT_THAT(relaunched.urlSession->urls(), IsEmpty());

  core.app.standardDomain->setObject(sentEvents, {std::string("damaged")});
  tracker.send(askedEvent());
  EXPECT_EQ(session.urls().size(), 2u);
  EXPECT_EQ(sent(), DefaultsValue{TextList{"action=ask"}});
}

TEST_F(EventTrackerTest, AnEventWhoseMarkTheStoreRefusesIsNotSent) {
  core.app.standardDomain->dropWrites(true);
  tracker.send(askedEvent());
  EXPECT_THAT(lines(), ElementsAre("Event tracking failed: the event can't be marked as sent"));
  EXPECT_THAT(session.urls(), IsEmpty());
  core.app.standardDomain->dropWrites(false);
  tracker.send(askedEvent());
  EXPECT_EQ(session.urls().size(), 1u);
}

TEST_F(EventTrackerTest, EventsThatDifferNeverShareAKey) {
  const std::vector<Event> events{{{"a", "1&b=2"}},   {{"a", "1"}, {"b", "2"}}, {{"a=1&b", "2"}},
                                  {{"a", "1%26b=2"}}, {{"a", "1%26b%3D2"}},     {}};
  for (int round = 0; round < 2; ++round)
    for (const auto& event : events) tracker.send(event);
  EXPECT_EQ(session.urls().size(), events.size());
}

TEST_F(EventTrackerTest, OneOfTwoProcessesThatSendAtOnceSucceeds) {
  MemoryPlatform twin(core.app.device);
  const auto twinContext = std::make_shared<VorselKelp::CoreContext>(twin.platform());
  BrellixEventTracker twinTracker(twinContext, "42", "news");
  const auto watched = std::make_shared<WatchedDefaults>(core.app.userDefaults);
  core.app.platform()->userDefaults = watched;
  watched->watched->beforeTransaction = [&] { twinTracker.send(askedEvent()); };
  tracker.send(askedEvent());
  EXPECT_EQ(twin.urlSession->urls().size(), 1u);
  EXPECT_THAT(session.urls(), IsEmpty()) << "the other one was faster";
  core.app.platform()->userDefaults = core.app.userDefaults;

  const auto sendAll = [](BrellixEventTracker& sender) {
    for (int i = 0; i < 300; ++i) sender.send({{"number", std::to_string(i)}});
  };
  std::thread otherProcess([&] { sendAll(twinTracker); });
  std::thread otherThread([&] { sendAll(tracker); });
  sendAll(tracker);
  otherThread.join();
  otherProcess.join();
  auto urls = session.urls();
  const auto twins = twin.urlSession->urls();
  urls.insert(urls.end(), twins.begin(), twins.end());
  EXPECT_EQ(urls.size(), 301u);
  std::ranges::sort(urls);
  EXPECT_EQ(std::ranges::adjacent_find(urls), urls.end());
}

TEST_F(EventTrackerTest, TheOutcomeIsALine) {
  const std::pair<ServerAnswer, std::vector<std::string>> outcomes[] = {
      {status(200), {"Event tracking success"}},
      {status(204), {"Event tracking success"}},
      {status(299), {"Event tracking success"}},
      {status(199), {"Event tracking failed with status code: 199"}},
      {status(300), {"Event tracking failed with status code: 300"}},
      {status(404), {"Event tracking failed with status code: 404"}},
      {ServerAnswer::failure("cancelled", -999), {}},
      {ServerAnswer::failure("down"), {"Event tracking failed: down"}}};
  std::size_t number = 0;
  for (const auto& [answer, expected] : outcomes) {
    tracker.send({{"number", std::to_string(number)}});
    ASSERT_TRUE(session.answer(number++, answer));
    EXPECT_EQ(lines(), expected);
    core.app.console->clear();
  }
}

TEST_F(EventTrackerTest, WithoutAURLOrACoreNothingIsRequested) {
  core.app.platform()->endpoints.events = "https://no host";
  tracker.send(askedEvent());
  EXPECT_THAT(lines(), ElementsAre("Failed to construct URL for event tracking"));
  EXPECT_EQ(sent(), DefaultsValue{TextList{"action=ask"}}) << "it counts as sent";
  core.context.reset();
  tracker.send(allowedEvent());
  EXPECT_THAT(session.urls(), IsEmpty());
}

}  // namespace
}  // namespace BrellixPush
