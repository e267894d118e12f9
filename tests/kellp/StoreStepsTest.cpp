#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "VorselKelpTesting/FaultyPlatform.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing_platform::FaultPlan;
using testing_platform::FaultPoint;
using testing_platform::ServerAnswer;

class StoreStepsTest : public KellpTest {
 protected:
  StoreStepsTest() { VorselKellp::install(testing_platform::faulty(*app_.platform(), plan_)); }

  /// How many of the writes since the last look stood in no transaction.
  std::size_t writesAlone() {
    const auto calls = plan_->calls();
    std::size_t alone = 0;
    bool within = false;
    for (; seen_ < calls.size(); ++seen_) {
      if (calls[seen_] == FaultPoint::storeBegin) within = true;
      if (calls[seen_] == FaultPoint::storeCommit) within = false;
      if (calls[seen_] == FaultPoint::storeWrite && !within) ++alone;
    }
    return alone;
  }
  void answerLast(const ServerAnswer& answer) {
    app_.urlSession->answer(app_.urlSession->unanswered().back(), answer);
  }
  void registerToken() {
    const std::uint8_t token[] = {1};
    VorselKellp::registerToken(token);
    app_.mainQueue->runUntilIdle();
  }
  static void deliver(const std::string& alertMembers) {
    platform::NotificationRequest request;
    request.identifier = "n-1";
    request.content.userInfo =
        platform::UserInfo::fromJSON(R"({"aps":{"alert":{"title":"T")" + alertMembers + "}}}");
    VorselKellp::didReceiveNotification(request, std::make_shared<platform::NotificationContent>(),
                                        [](auto) {});
  }

  std::shared_ptr<FaultPlan> plan_ = std::make_shared<FaultPlan>();
  std::size_t seen_ = 0;
};

TEST_F(StoreStepsTest, WhatEachOperationFlushesAndWritesOutsideOfATransaction) {
  std::shared_ptr<VorselConfig> config;
  const struct {
    const char* what;
    std::function<void()> run;
    std::size_t flushes, alone;
  } operations[] = {
      {"an interval", [] { (void)VorselBuilder("key", group).scheduleNotifications(90); }, 1, 1},
      {"switches", [&] { config = VorselBuilder("key", group).push().build(); }, 2, 0},
      {"a session", [&] { VorselKellp::initialize(config); }, 2, 0},
      {"a document, and the UTM value", [&] { answerLast(status(200, "{}")); }, 1, 1},
      {"an accepted install, and its open", [&] { answerLast(status(201)); }, 2, 1},
      {"an open that failed", [&] { answerLast(ServerAnswer::failure("down")); }, 1, 0},
      {"the next open", [] { VorselKellp::sendCustomEvent("k", 1); }, 1, 0},
      {"an open that makes up for one",
       [&] {
         store().setObject("vs_openCounter", {std::int64_t{2}});
         answerLast(status(201));
       },
       1, 0},
      {"a screen", [&] { app_.application->screenAppears(); }, 0, 0},
      {"a tracking event",
       [&] {
         VorselKellp::sendTrack({});
         answerLast(status(201));
       },
       1, 1},
      {"a reminder's text", [] { VorselKellp::setNotification("Hey"); }, 1, 1},
      {"a reminder", [] { VorselKellp::updateScheduler(); }, 0, 1},
      {"no reminder", [] { VorselKellp::cancelScheduledNotifications(); }, 1, 1},
      {"a token",
       [&] {
         registerToken();
         answerLast(status(201));
       },
       1, 1},
      {"a badge", [] { VorselKellp::setAppBadge(1); }, 1, 1},
      {"one more", [] { VorselKellp::addNotificationCount(nullptr); }, 1, 0},
      {"one less", [] { VorselKellp::decreseNotificationCount(nullptr); }, 1, 0},
      {"an ad", [] { deliver(R"(,"adex":true,"e":"https://e")"); }, 1, 0},
      {"a message",
       [] {
         deliver(R"(,"n":{"tag":"t","data":{"url":"u"},"actions":[{"action":"a","title":"A","url":"u"}]})");
       },
       4, 0},
      {"its opening",
       [] {
         VorselKellp::pushTrackOpen(false, {{"n-1", {}, {}}, "a"}, {});
       },
       0, 0},
      {"a token that waits",
       [&] {
         store().setObject("vs_push", {false});
         store().setObject("vs_wd", {false});
         registerToken();
       },
       1, 0},
      {"the installation's end", [] { VorselKellp::clearInstallationData(); }, 2, 1},
  };
  for (const auto& operation : operations) {
    const auto before = store().synchronizations();
    operation.run();
    EXPECT_EQ(store().synchronizations() - before, operation.flushes) << operation.what;
    EXPECT_EQ(writesAlone(), operation.alone) << operation.what;
  }
}

}  // namespace
}  // namespace VorselKelp
