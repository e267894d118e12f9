#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing_platform::ServerAnswer;
using Map = DefaultsValue::Map;

constexpr const char* banner =
    "     ****************************\n     * Please initialize SDK *\n     ****************************";

class TrackingTest : public KellpTest {
 protected:
  /// What is still under way reports to heard_, so it must end before heard_ does.
  void TearDown() override { app_.urlSession->cancelAll(); }

  /// Status (0: none), message and error of every report to the application.
  TrackCompletion hearing(std::vector<std::string>& heard) {
    return [&heard](std::optional<int> code, const std::optional<std::string>& message, const auto& error) {
      heard.push_back(std::to_string(code.value_or(0)) + " " + message.value_or("none") + " " +
                      (error ? error->description : "fine"));
    };
  }
  void send() { VorselKellp::sendTrack(hearing(heard_)); }

  /// The numbers of the tracking events among the requests, oldest first.
  std::vector<std::size_t> events() const {
    std::vector<std::size_t> numbers;
    const auto requests = app_.urlSession->requests();
    for (std::size_t i = 0; i < requests.size(); ++i)
      if (occurrences(requests[i].body, "\"e\":{") > 0) numbers.push_back(i);
    return numbers;
  }
  void answerLast(const ServerAnswer& answer) {
    ASSERT_FALSE(events().empty());
    ASSERT_TRUE(app_.urlSession->answer(events().back(), answer));
  }
  std::string lastBody() const { return app_.urlSession->request(events().back()).body; }
  std::vector<std::string> heard() { return std::exchange(heard_, {}); }

  std::vector<std::string> heard_;
};

TEST_F(TrackingTest, BeforeTheStartEveryOperationSaysSoAndDoesNothing) {
  VorselKellp::setValueFor(group);
  store().setObject("vs_push", {true});
  store().setObject("vs_analytics", {true});
  store().setObject("vs_utm", {Map{{"utm_k", {std::string("v")}}}});
  store().setObject("vs_ex_pa_dict", {Map{{"k", {std::string("v")}}}});
  const auto before = store().contents();
  VorselKellp::track({{"k", "w"}});
  send();
  EXPECT_THAT(VorselKellp::getTrack(), IsEmpty());
  EXPECT_EQ(VorselKellp::getTrackFor("k"), "Vorsel not initialized");
  VorselKellp::removeTrack();
  VorselKellp::removeTrackFor("k");
  VorselKellp::setUtm("k", "w");
  VorselKellp::removeUtm("k");
  EXPECT_EQ(VorselKellp::getUtm("k"), "Vorsel not initialized");
  EXPECT_THAT(lines(), testing::AllOf(testing::SizeIs(9), testing::Each(banner)));
  EXPECT_EQ(store().contents(), before);
  EXPECT_THAT(heard_, IsEmpty());
  start();
  EXPECT_THAT(VorselKellp::getTrack(), IsEmpty());
}

TEST_F(TrackingTest, ParametersAreCollectedAsText) {
  start();
  VorselKellp::track({{"text", "plain \"text\""}, {"number", 5}, {"flag", true}, {"part", 1.5}});
  VorselKellp::track({{"list", JSONAny::List{1, "a"}}, {"number", 6}});
  EXPECT_THAT(VorselKellp::getTrack(),
              ElementsAre(Pair("flag", "true"), Pair("list", R"([1,"a"])"), Pair("number", "6"),
                          Pair("part", "1.5"), Pair("text", "plain \"text\"")));
  EXPECT_EQ(VorselKellp::getTrackFor("number"), "6");
  EXPECT_EQ(VorselKellp::getTrackFor("other"), "Error! Key: other does not exist");
  EXPECT_FALSE(store().object("vs_ex_pa_dict"));

  store().setObject("vs_analytics", {false});
  VorselKellp::track({{"late", 1}});
  EXPECT_EQ(VorselKellp::getTrackFor("late"), "Error! Key: late does not exist");
}

TEST_F(TrackingTest, OneEventCarriesStoredAndCollectedParametersAndIsStoredOnceAccepted) {
  start();
  const Map old{{"both", {std::string("old")}}, {"stored", {std::string("s")}}};
  store().setObject("vs_ex_pa_dict", {old});
  VorselKellp::track({{"both", "new"}, {"own", 1}});
  send();
  EXPECT_EQ(occurrences(lastBody(), R"("e":{"both":"new","own":"1","stored":"s"})"), 1u) << lastBody();
  EXPECT_THAT(heard_, IsEmpty());
  answerLast(status(500));
  EXPECT_THAT(heard(), ElementsAre("500 Failed fine"));
  EXPECT_EQ(store().object("vs_ex_pa_dict"), DefaultsValue{old}) << "only an accepted event is stored";

  VorselKellp::sendTrack([&](auto code, const auto& message, const auto& error) {
    EXPECT_EQ(store().object("vs_ex_pa_dict"), DefaultsValue{old}) << "told first, and stored then";
    hearing(heard_)(code, message, error);
  });
  VorselKellp::track({{"meanwhile", 2}});
  answerLast(status(201));
  EXPECT_THAT(heard(), ElementsAre("201 Success fine"));
  const Map accepted{
      {"both", {std::string("new")}}, {"meanwhile", {std::string("2")}}, {"own", {std::string("1")}}};
  EXPECT_EQ(store().object("vs_ex_pa_dict"), DefaultsValue{accepted}) << "the working map as it is then";
  device_->advance(10);
  EXPECT_EQ(events().size(), 2u) << "an answered event is not sent again";
}

TEST_F(TrackingTest, WithoutPushOrASessionNothingIsSentAndNobodyHears) {
  start(false);
  send();
  EXPECT_TRUE(
      printed("**********************************************\n"
              "* Please enable push to use tracking events. *\n"
              "**********************************************"));
  store().setObject("vs_push", {true});
  for (const char* key : {"vs_session_num", "vs_session_id", "vs_visitedPCount", "vs_uniq_session_id"}) {
    const auto value = store().object(key);
    ASSERT_TRUE(value) << key;
    store().removeObject(key);
    send();
    EXPECT_THAT(events(), IsEmpty()) << key;
    store().setObject(key, *value);
  }
  EXPECT_THAT(heard_, IsEmpty());
  send();
  EXPECT_EQ(events().size(), 1u);
}

TEST_F(TrackingTest, ASecondSendTakesOverTheReportsOfTheFirst) {
  start();
  send();
  std::vector<std::string> second;
  VorselKellp::sendTrack(hearing(second));
  ASSERT_EQ(events().size(), 2u);
  app_.urlSession->answer(events()[1], status(201));
  app_.urlSession->answer(events()[0], status(404));
  EXPECT_THAT(second, ElementsAre("201 Success fine", "404 Failed fine"));
  EXPECT_THAT(heard_, IsEmpty());
  VorselKellp::sendTrack(nullptr);
  answerLast(status(201));
  EXPECT_EQ(second.size(), 2u);
}

TEST_F(TrackingTest, AfterATransportErrorItIsSentAgainEveryHalfSecondAndTheTenthTimeReportedOnce) {
  start();
  VorselKellp::track({{"k", "first"}});
  send();
  VorselKellp::track({{"k", "later"}});
  for (std::size_t failures = 1; failures <= 12; ++failures) {
    answerLast(ServerAnswer::failure("down"));
    EXPECT_THAT(heard(), ElementsAre("0 Failed down")) << failures;
    device_->advance(0.49);
    EXPECT_EQ(events().size(), failures);
    device_->advance(0.01);
    EXPECT_EQ(events().size(), failures + 1);
    EXPECT_EQ(heard(), failures == 10 ? std::vector<std::string>{"0  down"} : std::vector<std::string>{});
  }
  EXPECT_EQ(occurrences(lastBody(), R"("k":"later")"), 1u) << "a new try carries what is there then";
  EXPECT_EQ(app_.console->count("down"), 12u);
  answerLast(status(201));
  EXPECT_THAT(heard(), ElementsAre("201 Success fine"));
}

TEST_F(TrackingTest, APendingNewTryEndsWhenPushIsSwitchedOff) {
  start();
  send();
  answerLast(ServerAnswer::failure("down"));
  store().setObject("vs_push", {false});
  device_->advance(5);
  EXPECT_EQ(events().size(), 1u);
  EXPECT_THAT(lines(), testing::Contains(testing::HasSubstr("Please enable push")).Times(1));
}

/// A session without a network: every request has failed by the time it is handed over, on another thread.
class FailingSession final : public platform::URLSession {
 public:
  void send(platform::URLRequest, Completion completion) override {
    std::thread([&] { completion({{}, {}, Error{"no network", -1009}}); }).join();
  }
};

TEST_F(TrackingTest, TheTenthReportComesAlsoWhenTheNewTryFailsInNoTime) {
  start();
  send();
  for (int failures = 1; failures <= 10; ++failures) {
    if (failures > 1) device_->advance(0.5);
    answerLast(ServerAnswer::failure("down"));
  }
  heard_.clear();
  app_.platform()->urlSession = std::make_shared<FailingSession>();
  device_->advance(0.5);
  EXPECT_THAT(heard(), ElementsAre("0 Failed no network", "0  down"));
  device_->advance(10);
  EXPECT_THAT(heard(), testing::AllOf(testing::SizeIs(20), testing::Each("0 Failed no network")));
}

TEST_F(TrackingTest, RemovingForgetsInBothMaps) {
  start();
  VorselKellp::track({{"a", 1}, {"b", 2}});
  store().setObject("vs_ex_pa_dict", {Map{{"a", {std::string("1")}}, {"c", {std::string("3")}}}});
  VorselKellp::removeTrackFor("a");
  VorselKellp::removeTrackFor("nobody's");
  EXPECT_TRUE(printed("Value for key: a successfully removed"));
  EXPECT_TRUE(printed("Value for key: nobody's successfully removed"));
  send();
  EXPECT_EQ(occurrences(lastBody(), R"("e":{"b":"2","c":"3"})"), 1u) << lastBody();
  VorselKellp::removeTrack();
  EXPECT_THAT(VorselKellp::getTrack(), IsEmpty());
  EXPECT_FALSE(store().object("vs_ex_pa_dict"));
  send();
  EXPECT_EQ(occurrences(lastBody(), R"("e":{})"), 1u) << lastBody();
}

TEST_F(TrackingTest, UtmValuesAreKeptUnderTheirPrefix) {
  start();
  EXPECT_EQ(VorselKellp::getUtm("ht"), "key");
  VorselKellp::setUtm("source", "mail");
  VorselKellp::setUtm("source", "letter");
  EXPECT_EQ(VorselKellp::getUtm("source"), "letter");
  const Map both{{"utm_ht", {std::string("key")}}, {"utm_source", {std::string("letter")}}};
  EXPECT_EQ(store().object("vs_utm"), DefaultsValue{both});
  VorselKellp::removeUtm("source");
  VorselKellp::removeUtm("ht");
  EXPECT_EQ(VorselKellp::getUtm("source"), "Error! Key: source does not exist");
  EXPECT_EQ(store().object("vs_utm"), DefaultsValue{Map{}}) << "empty, not gone";
  store().removeObject("vs_utm");
  VorselKellp::removeUtm("source");
  EXPECT_FALSE(store().object("vs_utm"));
}

}  // namespace
}  // namespace VorselKelp
