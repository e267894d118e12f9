#include "ads/AdFeed.h"

#include <optional>
#include <string>

#include "core/TestCore.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::ServerAnswer;

struct AdFeedTest : testing::Test {
  AdFeedTest() { core.app.bundle->setMain("VorselKellpTrackID", "feed-7"); }

  void request(const std::string& slot = "slot") {
    ad.reset();
    error.reset();
    feed.request(390, 844, slot, [this](auto newAd, auto newError) {
      ++answers;
      ad = std::move(newAd);
      error = std::move(newError);
    });
  }
  void answer(const ServerAnswer& with) {
    ASSERT_FALSE(session.unanswered().empty());
    session.answer(session.unanswered().back(), with);
  }
  /// What is requested when an ad comes whose first creative has these members.
  std::vector<std::string> impression(const std::string& creative) {
    const auto before = session.urls().size();
    const auto decoded = json::decode<AdexObject>(R"({"items":[{"md":{)" + creative + "}}]}");
    EXPECT_TRUE(decoded) << creative;
    if (decoded) feed.countImpression(*decoded);
    const auto urls = session.urls();
    return {urls.begin() + static_cast<std::ptrdiff_t>(before), urls.end()};
  }

  TestCore core;
  testing_platform::MemoryURLSession& session = *core.app.urlSession;
  AdFeed feed{core.context, std::make_shared<VorselRequest>(core.context)};
  int answers = 0;
  std::optional<AdexObject> ad;
  std::optional<Error> error;
};

TEST_F(AdFeedTest, AsksWithTheTrackingIdTheSlotAndTheSize) {
  request();
  EXPECT_THAT(session.urls(),
              ElementsAre("https://adfeed.vorsel.example/v1/display/feed-7?page=com.vorsel.demo&sr=390x844"
                          "&sa=390x844&po=3&rt=1649422465953.4434&cb=ax26w6of7s&ar=fpagc&as=slot"
                          "&awh=390x844&ad=390x844&out=json"));
  const auto sent = session.request(0);
  EXPECT_EQ(sent.method, "GET");
  EXPECT_THAT(sent.headers, ElementsAre(platform::HTTPHeader{"Content-Type", "application/json"}));
  EXPECT_EQ(sent.timeout, 60);
  EXPECT_EQ(sent.sessionTimeout, 10);
  EXPECT_EQ(sent.body, "");
}

TEST_F(AdFeedTest, WithoutATrackingIdOrAURLNothingIsSent) {
  request("a line\nbreak");
  EXPECT_THAT(core.app.console->texts(), ElementsAre("URL is not valid"));
  core.app.console->clear();
  core.app.bundle->setMain("VorselKellpTrackID", std::nullopt);
  request();
  EXPECT_THAT(session.urls(), IsEmpty());
  EXPECT_THAT(core.app.console->texts(), ElementsAre(testing::HasSubstr("VorselKellpTrackID")));
  EXPECT_EQ(answers, 0);
}

TEST_F(AdFeedTest, ReadsTheWholeRecord) {
  request();
  answer(status(200, R"({"items":[{"md":{"l2":"v","img":"i","cmpid":1,"url":"u","title":"t","phone":"p",)"
                     R"("downl":"d","sprice":"s","displayurl":"du","cpm_t":["m"],"cpv_t":["w","x"],)"
                     R"("cpc_t":["c"],"creid":2},"s":true,"w":3,"r":"r","h":4,"l":"l","e":"e"},{}],)"
                     R"("session_id":"sid","callback":"cb","elapsed":5,"ts":"now","viewId":"not read"})"));
  ASSERT_TRUE(ad);
  EXPECT_FALSE(error);
  ASSERT_EQ(ad->items->size(), 2u);
  EXPECT_EQ(ad->sessionID, "sid");
  EXPECT_EQ(ad->callback, "cb");
  EXPECT_EQ(ad->elapsed, 5);
  EXPECT_EQ(ad->ts, "now");
  EXPECT_NE(ad->viewId, "not read");
  EXPECT_NE(ad->viewId, "");
  EXPECT_NE(ad->viewId, AdexObject().viewId) << "one of its own for each";
  const Item& item = ad->items->front();
  EXPECT_EQ(std::tie(item.s, item.w, item.r, item.h, item.l, item.e),
            std::make_tuple(true, 3, "r", 4, "l", "e"));
  const Md& md = *ad->creative();
  EXPECT_EQ(std::tie(md.l2, md.img, md.url, md.title, md.phone, md.downl, md.sprice, md.displayurl),
            std::make_tuple("v", "i", "u", "t", "p", "d", "s", "du"));
  EXPECT_EQ(std::tie(md.cmpid, md.creid), std::make_tuple(1, 2));
  EXPECT_THAT(*md.cpmT, ElementsAre("m"));
  EXPECT_THAT(*md.cpvT, ElementsAre("w", "x"));
  EXPECT_THAT(*md.cpcT, ElementsAre("c"));
}

TEST_F(AdFeedTest, OtherAnswersAreNoAdAnErrorOrSilence) {
  for (const char* body : {"", "no json", "[]", R"({"items":5})"}) {
    request();
    answer(status(200, body));
    EXPECT_FALSE(ad || error) << body;
  }
  EXPECT_EQ(answers, 4);
  request();
  answer(status(200, "{}"));
  EXPECT_TRUE(ad);
  request();
  answer(status(200, R"({"items":[]})"));
  ASSERT_TRUE(ad && ad->items);
  EXPECT_EQ(ad->creative(), nullptr);
  feed.countImpression(*ad);
  EXPECT_EQ(answers, 6);
  EXPECT_THAT(session.unanswered(), IsEmpty());

  request();
  answer(ServerAnswer::failure("down"));
  EXPECT_FALSE(ad);
  EXPECT_EQ(error->description, "down");
  EXPECT_THAT(core.app.console->texts(), ElementsAre("down"));
  for (const int code : {201, 204, 404, 500}) {
    request();
    answer(status(code, "{}"));
  }
  EXPECT_EQ(answers, 7) << "any other status leaves the caller waiting";
}

TEST_F(AdFeedTest, TheFirstImpressionTrackerGoesOutWithTheValueInItsPlace) {
  EXPECT_THAT(impression(R"("l2":"9","cpm_t":["https://m/${l2}?a=${l2}","https://never"])"),
              ElementsAre("https://m/9?a=9"));
  EXPECT_THAT(impression(R"("l2":"9","cpm_t":["https://m/plain"])"), ElementsAre("https://m/plain"));
  EXPECT_THAT(impression(R"("l2":"${l2}","cpm_t":["https://m?a=%24${l2}b"])"),
              ElementsAre("https://m?a=%24$%7Bl2%7Db"))
      << "a value is put in once";
  EXPECT_THAT(impression(R"("l2":"a b","cpm_t":["https://${l2}"])"), IsEmpty());
  EXPECT_EQ(core.app.console->count("URL is not valid"), 1u);
  EXPECT_THAT(impression(R"("cpm_t":["https://m/plain"])"), IsEmpty()) << "no value";
  EXPECT_THAT(impression(R"("l2":"9","cpm_t":[])"), IsEmpty());
  EXPECT_THAT(impression(R"("l2":"9","cpv_t":["https://v"],"cpc_t":["https://c"])"), IsEmpty());
  feed.countImpression(AdexObject{});
  AdexObject bare;
  bare.items.emplace(1);
  feed.countImpression(bare);
  const auto sent = session.request(0);
  EXPECT_EQ(sent.method, "GET");
  EXPECT_EQ(sent.timeout, 60);
  EXPECT_EQ(sent.sessionTimeout, 10);
  EXPECT_THAT(sent.headers, ElementsAre(platform::HTTPHeader{"Content-Type", "application/json"}));
  EXPECT_EQ(session.urls().size(), 3u);
}

}  // namespace
}  // namespace VorselKelp
