#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kellp/Kellp.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(KellpTest, OneNotificationFromDeliveryToOpenAcrossProcesses) {
  app_.urlSession->setRule("*", status(201));
  start();

  testing_platform::MemoryPlatform service(device_, testing_platform::ProcessKind::extension,
                                           "com.example.app.service");
  VorselKellp::install(service.platform());
  VorselKellp::setValueFor(group);
  platform::NotificationRequest request;
  request.identifier = "n-1";
  request.content.userInfo = platform::UserInfo::fromJSON(
      R"({"aps":{"alert":{"title":"T","n":{"image":"https://i/p.png","actions":[{"action":"yes","title":"Yes",)"
      R"("url":"https://y/${VA_BACID}"}],"data":{"url":"https://o","t":["https://c/1"]}}},"mutable-content":1}})");
  service.urlSession->setRule("/p.png", status(200, testing_platform::pngBeginning(2, 2)));
  VorselKellp::didReceiveNotification(request, std::make_shared<platform::NotificationContent>(),
                                      [&](auto content) {
                                        request.content = *content;
                                        device_->notificationCenter->deliver(request);
                                      });
  service.settle();
  ASSERT_EQ(device_->notificationCenter->delivered().size(), 1u);
  ASSERT_EQ(device_->files->paths().size(), 2u) << "the image, and the lock's file";

  testing_platform::MemoryPlatform relaunched(device_);
  VorselKellp::install(relaunched.platform());
  VorselKellp::setValueFor(group);
  VorselKellp::pushTrackOpen(true, {request, "yes"}, [](const auto&) { FAIL(); });
  relaunched.settle();
  EXPECT_THAT(relaunched.browser->pages(), ElementsAre("https://y/yes"));
  EXPECT_THAT(relaunched.urlSession->urls(), ElementsAre("https://c/1"));
  device_->notificationCenter->removeDeliveredNotifications({"n-1"});
  EXPECT_EQ(device_->files->paths().size(), 1u) << "the image goes with its notification";
}

TEST_F(KellpTest, CallsAndAnswersFromSeveralThreadsDoNotRace) {
  start();
  app_.urlSession->setRule("*", status(201));
  std::atomic<bool> done = false;
  std::thread network([&] {
    while (!done) app_.urlSession->answerByRules();
  });
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) {
      VorselKellp::setUserValue("k" + std::to_string(i % 3), "v");
      VorselKellp::sendCustomEvent("other", i);
    }
  });
  for (int i = 0; i < 100; ++i) {
    VorselKellp::sendCustomEvent("main", i);
    VorselKellp::setVorselDelegate({});
    const std::uint8_t token[] = {static_cast<std::uint8_t>(i)};
    VorselKellp::registerToken(token);
    app_.mainQueue->runUntilIdle();
  }
  other.join();
  done = true;
  network.join();
  app_.settle();
  EXPECT_THAT(app_.urlSession->unanswered(), IsEmpty());
  EXPECT_EQ(stored<std::int64_t>("vs_openCounter"), 0);
}

}  // namespace
}  // namespace VorselKelp
