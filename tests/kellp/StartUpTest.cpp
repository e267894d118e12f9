#include <optional>
#include <string>
#include <vector>

#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using platform::AuthorizationStatus;
using platform::DefaultsValue;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing_platform::ServerAnswer;

class StartUpTest : public KellpTest {
 protected:
  static constexpr const char* activityUrl = "https://collection.vorsel.example/v2/activity?type=mobile";
};

TEST_F(StartUpTest, TheFirstLaunchWritesTheDefaultEndpoints) {
  VorselKellp::initialize(VorselBuilder("key", group).crash().build());
  EXPECT_EQ(text("vs_activity_url"), activityUrl);
  EXPECT_EQ(text("vs_user_url"), "https://collection.vorsel.example/v2/users?type=mobile");
  EXPECT_EQ(text("vs_crash"), activityUrl) << "over the crash switch";
  EXPECT_EQ(text("vs_config_url"), "https://tag.vorsel.example/tag");
  EXPECT_FALSE(store().object("vs_crash_url"));
  EXPECT_TRUE(app_.standardDomain->contents().empty());
  EXPECT_THAT(app_.urlSession->urls(), ElementsAre("https://tag.vorsel.example/tag/key.json"));
}

TEST_F(StartUpTest, OnceInstalledTheEndpointsStayUntilTheInstallationIsCleared) {
  store().setObject("vs_reg", {true});
  store().setObject("vs_activity_url", {std::string("https://own.example/a")});
  VorselKellp::initialize(VorselBuilder("key", group).build());
  EXPECT_EQ(text("vs_activity_url"), "https://own.example/a");
  EXPECT_FALSE(store().object("vs_config_url"));
  EXPECT_THAT(app_.urlSession->urls(), IsEmpty()) << "nowhere to fetch from";
  store().setObject("vs_tok", {std::string("00")});
  VorselKellp::clearInstallationData();
  EXPECT_EQ(stored<bool>("vs_reg"), false);
  EXPECT_EQ(text("vs_tok"), "00");
  EXPECT_EQ(app_.application->unregistrations(), 1u);
  VorselKellp::initialize(VorselBuilder("key", group).build());
  EXPECT_EQ(text("vs_activity_url"), activityUrl);
  EXPECT_EQ(stored<std::int64_t>("vs_session_num"), 2);
}

TEST_F(StartUpTest, TheEndpointsAreThePlatforms) {
  app_.platform()->endpoints.collection = "http://127.0.0.1:1";
  app_.platform()->endpoints.tag = "http://127.0.0.1:2";
  VorselKellp::initialize(VorselBuilder("a b", group).build());
  EXPECT_EQ(text("vs_user_url"), "http://127.0.0.1:1/v2/users?type=mobile");
  EXPECT_THAT(app_.urlSession->urls(), ElementsAre("http://127.0.0.1:2/tag/a%20b.json"));
}

TEST_F(StartUpTest, WithoutAKeyTheCoreStaysDown) {
  VorselKellp::initialize(VorselBuilder("", group).push().build());
  app_.settle();
  EXPECT_THAT(lines(), ElementsAre("\n***************\n Missing ApiKey! \n***************\n"));
  EXPECT_THAT(app_.urlSession->urls(), IsEmpty());
  EXPECT_FALSE(VorselKellp::isInitialised());
  EXPECT_EQ(stored<std::int64_t>("vs_session_num"), 1);
  EXPECT_FALSE(store().object("vs_reg"));
  EXPECT_TRUE(store().object("vs_activity_url"));
  app_.application->screenAppears();
  EXPECT_EQ(stored<std::int64_t>("vs_visitedPCount"), 1) << "the screens are followed all the same";
}

TEST_F(StartUpTest, ATransportErrorLeavesTheCoreDown) {
  VorselKellp::initialize(VorselBuilder("key", group).push().build());
  app_.urlSession->answer(0, ServerAnswer::failure("down"));
  app_.settle();
  EXPECT_FALSE(VorselKellp::isInitialised());
  EXPECT_THAT(codes(), IsEmpty());
  EXPECT_FALSE(store().object("vs_utm"));
}

TEST_F(StartUpTest, WhatMetNoServerCanBeAskedAgain) {
  int ready = 0;
  VorselKellp::whenInitialised([&] { ++ready; });
  VorselKellp::initialize(VorselBuilder("key", group).push().build());
  VorselKellp::repeatConfiguration();
  EXPECT_EQ(app_.urlSession->urls().size(), 1u) << "not while an answer is outstanding";
  app_.urlSession->answer(0, ServerAnswer::failure("down"));
  VorselKellp::repeatConfiguration();
  VorselKellp::repeatConfiguration();
  app_.settle();
  EXPECT_EQ(app_.urlSession->urls().size(), 2u);
  EXPECT_EQ(ready, 0);
  app_.urlSession->answer(1, ServerAnswer::failure("down"));
  app_.urlSession->setRule("/tag/key.json", status(200, "{}"));
  VorselKellp::repeatConfiguration();
  app_.settle();
  EXPECT_TRUE(VorselKellp::isInitialised());
  EXPECT_EQ(ready, 1);
  EXPECT_EQ(stored<std::int64_t>("vs_session_num"), 1) << "the session was counted before";
  const auto requests = app_.urlSession->urls().size();
  VorselKellp::repeatConfiguration();
  VorselKellp::whenInitialised([&] { ++ready; });
  EXPECT_EQ(ready, 1) << "not inside the call";
  app_.settle();
  EXPECT_EQ(ready, 2);
  EXPECT_EQ(app_.urlSession->urls().size(), requests);
}

TEST_F(StartUpTest, ADocumentSwitchesPushOnBeforeThePermissionIsLookedAt) {
  VorselKellp::initialize(VorselBuilder("key", group).build());
  app_.urlSession->answer(0, status(200, R"({"push_config":{"enabled":true,"override":true},)"
                                         R"("url":{"activity":["https://b.example/activity"]}})"));
  EXPECT_TRUE(VorselKellp::isInitialised());
  device_->notificationCenter->setAuthorizationStatus(AuthorizationStatus::authorized);
  EXPECT_TRUE(app_.mainQueue->runOne()) << "it is looked at on the main queue";
  EXPECT_EQ(app_.application->registrations(), 0u) << "and the answer goes there again";
  app_.settle();
  EXPECT_EQ(app_.application->registrations(), 1u);
  EXPECT_EQ(app_.urlSession->urls().back(), "https://b.example/activity");
  EXPECT_EQ(store().mapEntry("vs_utm", {"utm_ht"}, platform::MapKind::textMap),
            DefaultsValue{std::string("key")});
}

TEST_F(StartUpTest, WhatThePermissionLeadsTo) {
  struct Case {
    AuthorizationStatus decision;
    const char* line;
    std::size_t registrations;
  };
  const Case cases[] = {
      {AuthorizationStatus::authorized, nullptr, 1},
      {AuthorizationStatus::provisional, nullptr, 1},
      {AuthorizationStatus::denied, "denied", 0},
      {AuthorizationStatus::notDetermined, "not determined, ask user for permission now", 0},
      {AuthorizationStatus::ephemeral, "not determined, ask user for permission now", 0},
  };
  for (const auto& c : cases) {
    app_.console->clear();
    const auto before = app_.application->registrations();
    device_->notificationCenter->setAuthorizationStatus(c.decision);
    start();
    EXPECT_EQ(app_.application->registrations() - before, c.registrations);
    for (const char* line : {"denied", "not determined, ask user for permission now"})
      EXPECT_EQ(printed(line), c.line && std::string(c.line) == line) << line;
    EXPECT_FALSE(printed("Notification service is not enabled"));
  }
  EXPECT_THAT(device_->notificationCenter->authorizationRequests(), IsEmpty());
  device_->notificationCenter->setAuthorizationStatus(static_cast<AuthorizationStatus>(9));
  EXPECT_DEATH(start(), "Fatal error: ");
}

TEST_F(StartUpTest, AStatusAbove299WithABodyStartsTwice) {
  VorselKellp::initialize(VorselBuilder("key", group).build());
  app_.urlSession->answer(0, status(404, "not found"));
  EXPECT_TRUE(VorselKellp::isInitialised());
  EXPECT_THAT(codes(), ElementsAre(200, 200));
  EXPECT_THAT(lines(), Contains("Response HTTP Status code: 404"));
  app_.application->becomeActive();
  app_.application->enterBackground();
  EXPECT_THAT(app_.application->backgroundTasks(), ElementsAre("ksession"))
      << "one session helper listens, not two";
}

TEST_F(StartUpTest, WithoutAStoreNothingBreaks) {
  device_->groupStores->refuse(group);
  start();
  EXPECT_FALSE(VorselKellp::isInitialised());
  EXPECT_THAT(app_.urlSession->urls(), IsEmpty());
  VorselKellp::clearInstallationData();
  VorselKellp::updateScheduler();
  VorselKellp::askForNotificationsPermission();
  app_.settle();
  EXPECT_TRUE(app_.standardDomain->contents().empty());
}

TEST_F(StartUpTest, TheStoreIsTheBuildersAndSetValueForComesTooLateAfterIt) {
  start();
  VorselKellp::setValueFor("");
  VorselKellp::setUserValue("k", "v");
  VorselKellp::sendCustomEvent("k", 1);
  EXPECT_TRUE(app_.standardDomain->contents().empty());
  EXPECT_TRUE(store().object("vs_openCounter"));
}

TEST_F(StartUpTest, TheReminderFollowsTheStoredInterval) {
  VorselKellp::setValueFor(group);
  VorselKellp::updateScheduler();
  EXPECT_THAT(device_->notificationCenter->added(), IsEmpty());
  VorselKellp::initialize(VorselBuilder("key", group).push().scheduleNotifications(3600).build());
  VorselKellp::updateScheduler();
  VorselKellp::updateScheduler();
  const auto pending = device_->notificationCenter->pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_EQ(pending[0].trigger->seconds, 3600);
  EXPECT_TRUE(pending[0].trigger->repeats);
  store().setObject("vs_sch_int", {std::string("60")});
  VorselKellp::updateScheduler();
  EXPECT_EQ(device_->notificationCenter->added().size(), 2u) << "a text is no interval";
}

TEST_F(StartUpTest, TheTestTrackDoesNothing) {
  bool called = false;
  VorselKellp::sendCustomTestTrack(1, [&](const auto&) { called = true; });
  app_.settle();
  EXPECT_FALSE(called);
  EXPECT_THAT(app_.urlSession->urls(), IsEmpty());
}

}  // namespace
}  // namespace VorselKelp
