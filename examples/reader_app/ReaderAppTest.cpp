// How an application's developers test their integration without a phone: the whole device is in memory, the
// user is a script, and the server is what the test says.

#include "reader_app/ReaderApp.h"

#include <gtest/gtest.h>

#include <array>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace reader {
namespace {

using namespace VorselKelp::testing_platform;
using VorselKelp::VorselKellp;
namespace platform = VorselKelp::platform;

ServerAnswer answer(int status, std::string body = {}) {
  return {status, std::move(body), {}, {}, {}};
}

class ReaderAppTest : public testing::Test {
 protected:
  ReaderAppTest() {
    device_->addGroup(ReaderApp::appGroup);
    process_.urlSession->setRule("/tag/reader-key.json", answer(200, "{}"));
    process_.urlSession->setRule("/v2/activity", answer(201));
    process_.urlSession->setRule("/v2/users", answer(201));
    app_ = ReaderApp::launch(process_.platform());
    process_.settle();
  }

  /// The service extension, a process of its own on the same device, prepares a push.
  platform::NotificationRequest deliver(const std::string& payload) {
    MemoryPlatform extension(device_, ProcessKind::extension, "com.example.reader.service");
    extension.urlSession->setRule("*", answer(200));
    VorselKellp::install(extension.platform());
    VorselKellp::setValueFor(ReaderApp::appGroup);
    platform::NotificationRequest request;
    request.identifier = "chapter-7";
    request.content.userInfo = platform::UserInfo::fromJSON(payload);
    VorselKellp::didReceiveNotification(request,
                                        std::make_shared<platform::NotificationContent>(request.content),
                                        [&](const auto& content) { request.content = *content; });
    extension.settle();
    VorselKellp::install(process_.platform());  // back in the application
    VorselKellp::setValueFor(ReaderApp::appGroup);
    VorselKellp::setVorselDelegate(app_);
    return request;
  }

  std::shared_ptr<MemoryDevice> device_ = std::make_shared<MemoryDevice>();
  MemoryPlatform process_{device_};
  std::shared_ptr<ReaderApp> app_;
};

constexpr std::array<std::uint8_t, 3> token{0x00, 0xAB, 0x0F};

TEST_F(ReaderAppTest, ReachesTheServerOnceTheUserAllowsIt) {
  device_->notificationCenter->setDialogBehaviour(DialogBehaviour::allows);
  app_->enableNotifications();
  process_.settle();
  ASSERT_EQ(process_.application->registrations(), 1u);
  app_->didRegister(token);
  process_.settle();
  EXPECT_TRUE(app_->reachable());
  EXPECT_NE(process_.urlSession->requests().back().body.find(R"("token":"00ab0f")"), std::string::npos);
}

TEST_F(ReaderAppTest, StaysQuietWhenTheUserRefuses) {
  device_->notificationCenter->setDialogBehaviour(DialogBehaviour::denies);
  app_->enableNotifications();
  process_.settle();
  app_->didRegister(token);
  process_.settle();
  EXPECT_EQ(process_.application->registrations(), 0u);
  EXPECT_FALSE(app_->reachable());
}

TEST_F(ReaderAppTest, OpensTheChapterThatANotificationLeadsTo) {
  const auto request = deliver(
      R"({"aps":{"alert":{"title":"Chapter 7 is out","n":{"data":{"url":"reader://chapter/7"}}},"mutable-content":1}})");
  EXPECT_EQ(request.content.title, "Chapter 7 is out");
  app_->didReceive({request, std::string(platform::defaultActionIdentifier)});
  app_->didReceive({request, std::string(platform::defaultActionIdentifier)});  // nothing is left to open
  EXPECT_EQ(app_->openedChapters(), std::vector<std::string>{"7"});
}

}  // namespace
}  // namespace reader
