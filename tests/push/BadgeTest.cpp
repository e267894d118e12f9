#include "push/Badge.h"

#include <cstdint>
#include <limits>
#include <string>

#include "core/TestCore.h"
#include "facade/WatchedDefaults.h"
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
  VorselKellp::setAppBadge(4);
  EXPECT_EQ(icon(), 4);
  VorselKellp::addNotificationCount(content);
  EXPECT_EQ(content->badge, 5);
  EXPECT_EQ(count(), 5);

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

TEST(Badge, WhatAnotherProcessCountsMeanwhileIsNotLost) {
  TestCore core;
  core.app.standardDomain->setObject("vs_push", {true});
  core.app.standardDomain->setObject("vs_badge", {std::int64_t{5}});
  const auto defaults = std::make_shared<BrellixPush::WatchedDefaults>(core.app.userDefaults);
  core.app.platform()->userDefaults = defaults;
  Badge badge(core.context);
  platform::NotificationContent content;
  for (const std::int64_t others : {20, 30}) {
    defaults->watched->beforeTransaction = [&] { core.app.standardDomain->setObject("vs_badge", {others}); };
    others == 20 ? badge.increase(&content) : badge.decrease(&content);
    EXPECT_EQ(core.integer("vs_badge"), others == 20 ? 21 : 29);
    EXPECT_EQ(content.badge, core.integer("vs_badge"));
  }
}

}  // namespace
}  // namespace VorselKelp
