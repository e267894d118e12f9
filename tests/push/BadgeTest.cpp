#include "push/Badge.h"

#include <cstdint>
#include <limits>
#include <string>
#include <thread>

#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

class BadgeTest : public KellpTest {
 protected:
  BadgeTest() {
    VorselKellp::setValueFor(group);
    store().setObject("vs_push", {true});
  }
  std::optional<std::int64_t> count() const { return stored<std::int64_t>("vs_badge"); }
  std::optional<std::int64_t> icon() const { return app_.application->badge(); }
};

TEST_F(BadgeTest, CountsOnTheIconOrOnTheContent) {
  VorselKellp::decreseNotificationCount(nullptr);
  EXPECT_FALSE(count()) << "nothing was counted yet";
  EXPECT_FALSE(icon());
  VorselKellp::addNotificationCount(nullptr);
  EXPECT_EQ(icon(), 1);
  const auto content = std::make_shared<platform::NotificationContent>();
  VorselKellp::addNotificationCount(content);
  EXPECT_EQ(content->badge, 2);
  EXPECT_EQ(icon(), 1) << "a content is the only target";
  for (const int left : {1, 0, -1}) {
    VorselKellp::decreseNotificationCount(left == 0 ? nullptr : content);
    EXPECT_EQ(count(), left);
    EXPECT_EQ(left == 0 ? icon() : content->badge, left);
  }
  const auto flushes = store().synchronizations();
  VorselKellp::setAppBadge(4);
  EXPECT_EQ(icon(), 4);
  EXPECT_EQ(store().synchronizations(), flushes + 1);
  VorselKellp::addNotificationCount(content);
  EXPECT_EQ(content->badge, 5);
  EXPECT_EQ(count(), 5);
  EXPECT_EQ(store().synchronizations(), flushes + 2);

  store().setObject("vs_badge", {std::string("many")});
  VorselKellp::decreseNotificationCount(nullptr);
  EXPECT_EQ(text("vs_badge"), "many") << "no count";
  VorselKellp::addNotificationCount(nullptr);
  EXPECT_EQ(count(), 1);
}

TEST_F(BadgeTest, WithPushOffNothingChanges) {
  VorselKellp::setAppBadge(3);
  const auto content = std::make_shared<platform::NotificationContent>();
  for (const bool remove : {false, true}) {
    store().setObject("vs_push", {false});
    if (remove) store().removeObject("vs_push");
    VorselKellp::addNotificationCount(content);
    VorselKellp::decreseNotificationCount(nullptr);
    VorselKellp::setAppBadge(9);
    EXPECT_EQ(count(), 3);
    EXPECT_EQ(icon(), 3);
    EXPECT_FALSE(content->badge);
  }
}

TEST_F(BadgeTest, AnOverflowingCountStopsTheProcess) {
  VorselKellp::setAppBadge(std::numeric_limits<std::int64_t>::max());
  EXPECT_DEATH(VorselKellp::addNotificationCount(nullptr), "Fatal error: the badge count overflows");
  VorselKellp::decreseNotificationCount(nullptr);
  VorselKellp::addNotificationCount(nullptr);
  EXPECT_EQ(count(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(BadgeTest, TwoProcessesThatCountAtOnceLoseNothing) {
  constexpr int each = 2000;
  VorselKellp::setAppBadge(0);
  testing_platform::MemoryPlatform service(device_, testing_platform::ProcessKind::extension,
                                           "com.example.app.service");
  const auto process = [](const testing_platform::MemoryPlatform& platform) {
    const auto context = std::make_shared<CoreContext>(platform.platform());
    context->state.setAppGroupSetting(group);
    return Badge(context);
  };
  std::thread other([badge = process(service)]() mutable {
    platform::NotificationContent content;
    for (int i = 0; i < 2 * each; ++i) badge.increase(&content);
  });
  Badge badge = process(app_);
  for (int i = 0; i < each; ++i) badge.decrease(nullptr);
  other.join();
  EXPECT_EQ(count(), each);
}

}  // namespace
}  // namespace VorselKelp
