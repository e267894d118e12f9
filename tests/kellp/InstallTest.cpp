#include <functional>
#include <string>

#include "core/CoreScope.h"
#include "kellp/Kellp.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing_platform::MemoryPlatform;

// Named so that it runs first: nothing may be installed in the process yet.
TEST(AInstallDeathTest, EveryCallNeedsAPlatform) {
  EXPECT_DEATH((void)VorselKellp::isInitialised(), "Fatal error: .*install");
  EXPECT_DEATH(VorselBuilder("key", "group"), "Fatal error: .*install");
  EXPECT_DEATH(VorselConfig("key", {}, {}, true, {}, {}, {}, {}, {}, false, false, false),
               "Fatal error: .*install");
  EXPECT_DEATH((void)VorselKellp::getNotificationContent({}), "Fatal error: .*install");
}

TEST(InstallDeathTest, AMissingServiceIsNamed) {
  using platform::Platform;
  const std::pair<const char*, std::function<void(Platform&)>> cases[] = {
      {"userDefaults", [](Platform& p) { p.userDefaults.reset(); }},
      {"clock", [](Platform& p) { p.clock.reset(); }},
      {"inAppBrowser", [](Platform& p) { p.inAppBrowser.reset(); }}};
  for (const auto& [name, remove] : cases) {
    MemoryPlatform app;
    remove(*app.platform());
    EXPECT_DEATH(VorselKellp::install(app.platform()), std::string("Fatal error: .*") + name);
  }
  EXPECT_DEATH(VorselKellp::install(nullptr), "Fatal error: ");
}

TEST_F(KellpTest, ASecondInstallTakesTheFirstOnesPlaceAndDropsItsAnswers) {
  VorselKellp::initialize(VorselBuilder("key", group).push().build());
  MemoryPlatform next;
  VorselKellp::install(next.platform());
  app_.urlSession->answer(0, status(200, "{}"));
  app_.settle();
  EXPECT_FALSE(VorselKellp::isInitialised());
  EXPECT_EQ(bodies("/v2/activity").size(), 0u);
  EXPECT_EQ(next.urlSession->requests().size(), 0u);
  EXPECT_EQ(VorselKellp::vorselDelegate(), nullptr);
}

TEST_F(KellpTest, CoresLiveSideBySide) {
  MemoryPlatform first;
  MemoryPlatform second;
  const auto a = std::make_shared<Kellp>(first.platform());
  const auto b = std::make_shared<Kellp>(second.platform());
  {
    const CoreScope scope(a->context);
    a->initialize(VorselBuilder("key", std::nullopt).push().build());
  }
  first.urlSession->setRule("/tag/key.json", status(200, "{}"));
  first.settle();
  EXPECT_TRUE(a->context->state.initialised);
  EXPECT_FALSE(b->context->state.initialised);
  EXPECT_FALSE(VorselKellp::isInitialised());
  EXPECT_TRUE(second.standardDomain->contents().empty());
  EXPECT_TRUE(app_.standardDomain->contents().empty());
}

TEST_F(KellpTest, ACoreGoesWhenItsAnswersHaveCome) {
  auto device = std::make_unique<MemoryPlatform>();
  auto kellp = std::make_shared<Kellp>(device->platform());
  std::weak_ptr<CoreContext> context = kellp->context;
  std::weak_ptr<platform::URLSession> session = device->urlSession;
  {
    const CoreScope scope(kellp->context);
    kellp->initialize(VorselBuilder("key", std::nullopt).push().build());
  }
  device->urlSession->answer(0, status(200, "{}"));
  device->settle();
  kellp.reset();
  device.reset();
  EXPECT_TRUE(context.expired());
  EXPECT_TRUE(session.expired());
}

}  // namespace
}  // namespace VorselKelp
