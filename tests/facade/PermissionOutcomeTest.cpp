#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/CoreContext.h"
#include "facade/FacadeTest.h"

namespace BrellixPush {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using VorselKelp::platform::AuthorizationStatus;
using VorselKelp::testing_platform::DialogBehaviour;

class PermissionOutcomeTest : public FacadeTest {
 protected:
  /// The publisher's name and the action of every event reported, and of those since the last look.
  std::vector<std::string> events() {
    std::vector<std::string> all;
    for (const auto& url : app_.urlSession->urls()) {
      if (!url.starts_with("https://events.brellix.example")) continue;
      const auto pid = url.find("pid="), end = url.find("&v=");
      all.push_back(url.substr(pid, end - pid) + " " + url.substr(url.find("action=")));
    }
    std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end());
    seen_ = all.size();
    return fresh;
  }
  std::optional<std::int64_t> lastStatus() const {
    const auto value = app_.standardDomain->object("com.brellix.push.auth_status");
    return value ? std::optional(*value->as<std::int64_t>()) : std::nullopt;
  }
  VorselKelp::testing_platform::MemoryNotificationCenter& center() { return *device_->notificationCenter; }
  void ask() {
    BrellixPushSDK::askForNotificationsPermission();
    app_.settle();
  }

 private:
  std::size_t seen_ = 0;
};

TEST_F(PermissionOutcomeTest, AskingIsReportedOnceAndEachOutcomeOnce) {
  startFacade();
  center().setDialogBehaviour(DialogBehaviour::denies);
  ask();
  EXPECT_THAT(events(), ElementsAre("pid=-999&src=key action=ask", "pid=-999&src=key action=block"));
  EXPECT_EQ(lastStatus(), 1);
  EXPECT_THAT(app_.urlSession->urls().back(), testing::HasSubstr("/v2/activity")) << "the core asks second";
  ask();
  EXPECT_THAT(events(), IsEmpty()) << "unchanged";
  center().setAuthorizationStatus(AuthorizationStatus::authorized);
  ask();
  EXPECT_THAT(events(), ElementsAre("pid=-999&src=key action=allow"));
  EXPECT_EQ(lastStatus(), 2);
  center().setAuthorizationStatus(AuthorizationStatus::denied);
  ask();
  EXPECT_THAT(events(), IsEmpty()) << "reported before";
  EXPECT_EQ(lastStatus(), 1);
  EXPECT_THAT(center().authorizationRequests(), testing::Each(7u));
}

TEST_F(PermissionOutcomeTest, EveryKindOfPermissionCountsAsAllowedAndNoDecisionAsNothing) {
  startFacade();
  center().setDialogBehaviour(DialogBehaviour::cannotAsk);
  ask();
  EXPECT_THAT(events(), ElementsAre(testing::EndsWith("ask")));
  EXPECT_EQ(lastStatus(), 0);
  for (const auto permitted : {AuthorizationStatus::provisional, AuthorizationStatus::ephemeral}) {
    app_.standardDomain->removeObject("com.brellix.push.sent_events");
    center().setAuthorizationStatus(permitted);
    ask();
    EXPECT_THAT(events(), ElementsAre(testing::EndsWith("ask"), testing::EndsWith("allow")));
  }
  for (const auto unknown : {static_cast<AuthorizationStatus>(5), AuthorizationStatus::notDetermined}) {
    app_.standardDomain->removeObject("com.brellix.push.sent_events");
    center().setAuthorizationStatus(unknown);
    ask();
    EXPECT_THAT(events(), ElementsAre(testing::EndsWith("ask"))) << "changed, but to no decision";
  }
}

TEST_F(PermissionOutcomeTest, TwoRequestsPendingTogetherShareADialogAndTheNamedPublisherGetsTheOutcome) {
  startFacade();
  center().setDialogBehaviour(DialogBehaviour::leavesOpen);
  BrellixPushSDK::askForNotificationsPermission();
  EXPECT_THAT(center().authorizationRequests(), IsEmpty()) << "on the main queue";
  app_.settle();
  EXPECT_EQ(center().authorizationRequests().size(), 2u) << "the facade's and the core's own";
  BrellixPushSDK::initialize("42", "news");
  EXPECT_TRUE(center().answerDialog(true));
  EXPECT_FALSE(center().answerDialog(true)) << "there was one dialog";
  app_.settle();
  EXPECT_THAT(events(), ElementsAre("pid=-999&src=key action=ask", "pid=42&src=news action=allow"));
  EXPECT_EQ(app_.application->registrations(), 1u);
}

TEST_F(PermissionOutcomeTest, AskingOnAControllerGoesOverTheMainQueue) {
  startFacade();
  auto controller = std::make_shared<VorselKelp::ui::ViewController>();
  const std::weak_ptr<VorselKelp::ui::ViewController> weak = controller;
  BrellixPushSDK::askForNotificationPermissionWith(controller);
  controller = nullptr;
  EXPECT_TRUE(weak.expired());
  EXPECT_THAT(events(), ElementsAre(testing::EndsWith("ask")));
  EXPECT_THAT(center().authorizationRequests(), IsEmpty());
  center().setDialogBehaviour(DialogBehaviour::leavesOpen);
  app_.settle();
  EXPECT_EQ(center().authorizationRequests().size(), 2u) << "the facade's and the core's, undecided still";
  center().answerDialog(false);
  EXPECT_THAT(events(), ElementsAre(testing::EndsWith("block")));
  EXPECT_THAT(app_.urlSession->urls().back(), testing::HasSubstr("/v2/activity")) << "the core asks second";

  const auto replaced = VorselKelp::CoreContext::installed();
  BrellixPushSDK::askForNotificationPermissionWith(std::make_shared<VorselKelp::ui::ViewController>());
  VorselKelp::VorselKellp::install(app_.platform());
  app_.settle();
  EXPECT_EQ(center().authorizationRequests().size(), 2u) << "another core has taken over";
}

TEST_F(PermissionOutcomeTest, WithoutATrackerTheOutcomeIsRememberedAndNothingReported) {
  ask();
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(lastStatus(), 2);
  startFacade();
  ask();
  EXPECT_THAT(events(), ElementsAre(testing::EndsWith("ask"))) << "nothing changed since";
}

}  // namespace
}  // namespace BrellixPush
