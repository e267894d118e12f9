#include <limits>
#include <memory>
#include <string>

#include "VorselKelpTesting/FaultyPlatform.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::ServerAnswer;

class ActivityTest : public KellpTest {
 protected:
  void answerActivity(const ServerAnswer& answer) {
    app_.urlSession->setRule("/v2/activity", answer);
    app_.settle();
  }
};

TEST_F(ActivityTest, TheFirstStartReportsInstallAndThenOpen) {
  start(false);
  EXPECT_THAT(codes(), ElementsAre(200));
  answerActivity(status(201));
  EXPECT_THAT(codes(), ElementsAre(200, 205));
  EXPECT_EQ(stored<bool>("vs_reg"), true);
  EXPECT_THAT(lines(), ElementsAre("Response HTTP Status code: 200", "ENTER INSTALL ACTIVITY", "Install sent",
                                   "Notification service is not enabled",
                                   testing::StartsWith("INSTALL SENT "), "Open sent"));
  for (const auto& body : bodies("/v2/activity")) {
    EXPECT_EQ(occurrences(body, "\"e\":"), 0u);
    EXPECT_EQ(occurrences(body, "utm_ht"), 0u);
  }
}

TEST_F(ActivityTest, AnInstallThatTheServerAcceptsCountsWhateverBecameOfTheCore) {
  start(false);
  VorselKellp::uninstall();
  answerActivity(status(201));
  EXPECT_THAT(codes(), ElementsAre(200, 205));
  EXPECT_EQ(stored<bool>("vs_reg"), true);
}

TEST_F(ActivityTest, AnAcceptedInstallIsStoredBeforeItsOpenGoesOut) {
  using namespace testing_platform;
  const auto plan = std::make_shared<FaultPlan>(
      FaultRule{.at = 3, .fault = Fault::stop, .only = FaultPoint::request});  // document, install, open
  VorselKellp::install(faulty(*app_.platform(), plan));
  start(false);
  answerActivity(status(201));
  EXPECT_TRUE(plan->stopped());
  EXPECT_EQ(stored<bool>("vs_reg"), true);
}

TEST_F(ActivityTest, LaterStartsReportOpenAndWhatIsOwed) {
  store().setObject("vs_reg", {true});
  store().setObject("vs_activity_url", {std::string("https://a.example/v2/activity?type=mobile")});
  store().setObject("vs_config_url", {std::string("https://t.example/tag")});
  store().setObject("vs_openCounter", {std::int64_t{1}});
  start(false);
  EXPECT_THAT(codes(), ElementsAre(205, 205));
  EXPECT_TRUE(printed("ENTER OPEN ACTIVITY"));
  answerActivity(ServerAnswer::failure("down"));
  EXPECT_EQ(app_.console->count("error from activity open"), 2u);
  EXPECT_EQ(app_.console->count("Request ERROR"), 2u);
  EXPECT_EQ(stored<std::int64_t>("vs_openCounter"), 2);
}

TEST_F(ActivityTest, AnInstallThatIsNotAcceptedIsReportedAgainNextTime) {
  for (const int refused : {200, 204, 500}) {
    start(false);
    answerActivity(status(refused));
    EXPECT_NE(stored<bool>("vs_reg"), true) << refused;
  }
  EXPECT_FALSE(printed("error Install code"));
  EXPECT_THAT(codes(), ElementsAre(200, 200, 200));
  app_.urlSession->setRule("/v2/activity", ServerAnswer::failure("down"));
  start(false);
  EXPECT_TRUE(printed("down"));
  EXPECT_TRUE(printed("error Install code"));
  EXPECT_THAT(codes(), ElementsAre(200, 200, 200, 200));
}

TEST_F(ActivityTest, NothingIsReportedWithAnalyticsOffOrASessionValueMissing) {
  const std::string off = R"({"analytics":{"enabled":false,"override":true}})";
  VorselKellp::initialize(VorselBuilder("key", group).build());
  app_.urlSession->answer(0, status(200, off));
  EXPECT_TRUE(VorselKellp::isInitialised());
  device_->notificationCenter->setDialogBehaviour(testing_platform::DialogBehaviour::denies);
  VorselKellp::askForNotificationsPermission();
  app_.settle();
  EXPECT_THAT(codes(), IsEmpty());
  EXPECT_FALSE(stored<bool>("vs_reg"));

  app_.urlSession->setRule("/tag/key.json", status(200, "{}"));
  for (const char* key : {"vs_session_num", "vs_session_id", "vs_visitedPCount", "vs_uniq_session_id"}) {
    VorselKellp::initialize(VorselBuilder("key", group).build());
    store().removeObject(key);
    app_.settle();
    EXPECT_THAT(codes(), IsEmpty()) << key;
  }
  VorselKellp::initialize(VorselBuilder("key", group).build());
  app_.settle();
  EXPECT_THAT(codes(), ElementsAre(200)) << "with all four it is";
}

TEST_F(ActivityTest, CustomEventsShareTheOpenCounterAndNothingElse) {
  VorselKellp::initialize(VorselBuilder("", group).analytics(false).build());
  store().setObject("vs_openCounter", {std::int64_t{1}});
  VorselKellp::setUserValue("plan", "gold");
  VorselKellp::sendCustomEvent("buy", JSONAny::Dictionary{{"price", 2.5}, {"name", "a\"b"}});
  const auto sent = bodies("/v2/activity");
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0], sent[1]);
  EXPECT_EQ(occurrences(sent[0], R"("e":{"buy":"{\"price\":2.5,\"name\":\"a\\\"b\"}"},)"), 1u) << sent[0];
  EXPECT_EQ(occurrences(sent[0], R"("u":{"plan":"gold"},"code":205,)"), 1u) << sent[0];
  answerActivity(ServerAnswer::failure("down"));
  EXPECT_EQ(app_.console->count("error from custom event"), 2u);
  EXPECT_EQ(stored<std::int64_t>("vs_openCounter"), 2);
  app_.console->clear();
  VorselKellp::sendCustomEvent("\xff", 1);
  EXPECT_THAT(lines(), ElementsAre(testing::_, testing::StartsWith("sendActivityOpen ")))
      << "a key without a form is said twice, and sent without a body";
}

TEST_F(ActivityTest, CustomEventsStopOnProgrammingErrors) {
  EXPECT_DEATH(VorselKellp::sendCustomEvent("k", 1), "Fatal error: ") << "no session was ever counted";
  start(false);
  EXPECT_DEATH(VorselKellp::sendCustomEvent("k", std::numeric_limits<double>::infinity()), "Fatal error: ");
  for (const char* key : {"vs_session_num", "vs_session_id", "vs_visitedPCount", "vs_uniq_session_id"}) {
    const auto value = store().object(key);
    store().removeObject(key);
    EXPECT_DEATH(VorselKellp::sendCustomEvent("k", 1), "Fatal error: ") << key;
    store().setObject(key, *value);
  }
}

TEST_F(ActivityTest, ARefusedPermissionIsReportedOnceTheCoreIsUp) {
  device_->notificationCenter->setDialogBehaviour(testing_platform::DialogBehaviour::denies);
  VorselKellp::initialize(VorselBuilder("", group).build());
  VorselKellp::askForNotificationsPermission();
  app_.settle();
  EXPECT_THAT(codes(), IsEmpty());
  start(false);
  app_.console->clear();
  VorselKellp::askForNotificationsPermission();
  EXPECT_THAT(device_->notificationCenter->authorizationRequests(), ElementsAre(7u))
      << "asked on the main queue";
  app_.settle();
  EXPECT_THAT(device_->notificationCenter->authorizationRequests(), ElementsAre(7u, 7u));
  EXPECT_THAT(codes(), ElementsAre(200, 501));
  EXPECT_THAT(lines(), IsEmpty()) << "only an install is announced";
  app_.urlSession->answer(2, ServerAnswer::failure("down"));
  EXPECT_THAT(lines(), ElementsAre("down"));
}

}  // namespace
}  // namespace VorselKelp
