// Answers that come when nobody waits for them any more.

#include <gtest/gtest.h>

#include "content_ext/CarouselTest.h"
#include "reliability/Road.h"

namespace VorselKelp::reliability {
namespace {

using testing_platform::Fault;
using testing_platform::FaultPlan;
using testing_platform::FaultPoint;
using testing_platform::FaultRule;
using testing_platform::MemoryPlatform;
using testing_platform::ProcessKind;

/// A process whose library is taken down while requests are unanswered: all from the `at`-th on.
class Orphans {
 public:
  Orphans(std::size_t at, ProcessKind kind, const char* bundle)
      : plan_(std::make_shared<FaultPlan>(
            FaultRule{.at = at, .fault = Fault::lateAnswer, .onwards = true, .only = FaultPoint::request})),
        memory_(makeDevice(), kind, bundle) {
    memory_.urlSession->setRule("*", status(200, R"({"items":[{"md":{"img":"https://i/ad.png"}}]})"));
    memory_.urlSession->setRule("/tag/key.json", status(200, "{}"));
    memory_.urlSession->setRule("/v2/activity", status(201, "{}"));
    memory_.urlSession->setRule("/first.png", status(200, testing_platform::pngBeginning(2, 2)));
    VorselKellp::install(testing_platform::faulty(*memory_.platform(), plan_));
    VorselKellp::setValueFor(Road::group);
  }
  /// Returns how many answers came after the end.
  std::size_t end() {
    memory_.settle();
    VorselKellp::uninstall();
    std::size_t late = 0;
    for (std::size_t given = 1; given > 0; late += given) {
      given = plan_->releaseAnswers();
      memory_.settle();
    }
    return late;
  }
  MemoryPlatform& memory() { return memory_; }

 private:
  static std::shared_ptr<testing_platform::MemoryDevice> makeDevice() {
    auto device = std::make_shared<testing_platform::MemoryDevice>();
    device->addGroup(Road::group);
    device->notificationCenter->setAuthorizationStatus(platform::AuthorizationStatus::authorized);
    return device;
  }
  const std::shared_ptr<FaultPlan> plan_;
  MemoryPlatform memory_;
};

/// Runs `use` and takes the library down at each of its requests in turn; returns how many requests there
/// were.
template <class Use>
std::size_t atEachRequest(ProcessKind kind, const char* bundle, Use use) {
  for (std::size_t at = 1;; ++at) {
    Orphans process(at, kind, bundle);
    use(process.memory());
    if (process.end() == 0) return at - 1;
  }
}

TEST(OrphanTest, AnApplicationThatIsGone) {
  EXPECT_GE(
      atEachRequest(ProcessKind::application, MemoryPlatform::defaultBundleIdentifier,
                    [](MemoryPlatform& memory) {
                      VorselKellp::initialize(VorselBuilder("key", Road::group).push().beacon(true).build());
                      memory.settle();
                      const std::uint8_t token[]{1, 2, 3};
                      VorselKellp::registerToken(token);
                      VorselKellp::sendCustomEvent("event", 1);
                      VorselKellp::track({{"a", 1}});
                      VorselKellp::sendTrack([](const auto&...) {});
                    }),
      5u);
}

TEST(OrphanTest, AnExtensionThatIsGone) {
  for (const Message& message : {first, advert}) {
    const auto requests =
        atEachRequest(ProcessKind::extension, "com.example.app.service", [&](MemoryPlatform& memory) {
          platform::NotificationRequest request;
          request.identifier = message.identifier;
          request.content.userInfo = platform::UserInfo::fromJSON(message.payload());
          VorselKellp::didReceiveNotification(
              request, std::make_shared<platform::NotificationContent>(request.content), [](const auto&) {});
          memory.settle();
        });
    EXPECT_GE(requests, 2u);
  }
}

TEST(OrphanTest, ACarouselThatIsGone) {
  EXPECT_GE(atEachRequest(ProcessKind::extension, "com.example.app.content",
                          [](MemoryPlatform&) {
                            const auto controller = std::make_shared<ContentController>();
                            controller->view()->frame = {{0, 0}, {320, 240}};
                            const auto view = VorselNotificationView::make(delivered(carousel()), controller);
                            view->performLayout();
                          }),
            2u);
}

}  // namespace
}  // namespace VorselKelp::reliability
