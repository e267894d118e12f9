#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "VorselKelp/VorselBuilder.h"
#include "core/TestCore.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using Map = DefaultsValue::Map;

TEST(VorselBuilder, AsConstructed) {
  TestCore core;
  const auto config = VorselBuilder("key", std::nullopt).build();
  EXPECT_EQ(config->apiKey(), "key");
  EXPECT_FALSE(config->appGroupId());
  EXPECT_TRUE(config->analytics());
  for (const auto& optional : {config->crash(), config->push(), config->geofence(), config->beacon(),
                               config->custom(), config->location()})
    EXPECT_FALSE(optional);
  EXPECT_FALSE(config->schedule || config->adex || config->consent);
  EXPECT_EQ(core.app.standardDomain->contents(), (Map{{"vs_analytics", {true}}}));
  EXPECT_EQ(core.app.standardDomain->synchronizations(), 1u);
}

TEST(VorselBuilder, EverySwitchReachesTheGroupStore) {
  TestCore core;
  VorselBuilder builder("key", TestCore::group);
  const auto config = builder.crash()
                          .adex()
                          .push()
                          .custom()
                          .analytics(false)
                          .geofence(true)
                          .beacon(false)
                          .locationTracking(true)
                          .scheduleNotifications(3600)
                          .build();
  EXPECT_TRUE(config->schedule && config->adex);
  EXPECT_EQ(config->appGroupId(), TestCore::group);
  EXPECT_EQ(core.groupStore()->contents(), (Map{{"vs_analytics", {false}},
                                                {"vs_beacon", {false}},
                                                {"vs_crash", {true}},
                                                {"vs_custom", {true}},
                                                {"vs_geofence", {true}},
                                                {"vs_location", {true}},
                                                {"vs_push", {true}},
                                                {"vs_sch_int", {3600.0}}}));
  EXPECT_TRUE(core.app.standardDomain->contents().empty());
}

TEST(VorselBuilder, TheIntervalIsStoredAtOnceAndTheSwitchesWhenBuilt) {
  TestCore core;
  VorselBuilder builder("key", std::nullopt);
  builder.push().customNotificationHandling().scheduleNotifications(0.5);
  EXPECT_EQ(core.app.standardDomain->contents(), (Map{{"vs_sch_int", {0.5}}}));
  EXPECT_EQ(core.app.standardDomain->synchronizations(), 1u);
  EXPECT_EQ(builder.build()->custom(), true);
  EXPECT_EQ(core.stored<bool>("vs_custom"), true);
}

TEST(VorselBuilder, AnAbsentSwitchKeepsTheLastExplicitChoice) {
  TestCore core;
  (void)VorselBuilder("key", std::nullopt).push().build();
  const auto config = VorselBuilder("key", std::nullopt).build();
  EXPECT_FALSE(config->push());
  EXPECT_EQ(core.stored<bool>("vs_push"), true);
  config->setPush(false);
  EXPECT_EQ(core.stored<bool>("vs_push"), false);
  config->setPush(std::nullopt);
  EXPECT_FALSE(config->push());
  EXPECT_EQ(core.stored<bool>("vs_push"), false);
}

TEST(VorselBuilder, TakesTheKeyOfThePropertyListWhenNoneIsGiven) {
  TestCore core;
  EXPECT_DEATH(VorselBuilder(std::nullopt, std::nullopt), "Fatal error: ");
  core.app.bundle->setMain("VorselKellpApiKey", "listed");
  EXPECT_EQ(VorselBuilder(std::nullopt, std::nullopt).build()->apiKey(), "listed");
  EXPECT_EQ(VorselBuilder("", std::nullopt).build()->apiKey(), "");
  EXPECT_DEATH(VorselBuilder(), "Fatal error: ");
}

TEST(VorselBuilder, SetsTheGroupBeforeTheStoreIsUsed) {
  TestCore core;
  core.context->state.setAppGroupSetting("earlier");
  const VorselBuilder builder("key", std::nullopt);
  EXPECT_EQ(core.context->state.appGroupSetting(), "");
}

TEST(VorselConfig, WorksWithoutAStore) {
  TestCore core;
  core.app.device->groupStores->refuse("");
  const VorselConfig config("key", std::nullopt, true, false, true, false, std::nullopt, true, false, true,
                            true, true);
  EXPECT_EQ(config.crash(), true);
  EXPECT_FALSE(config.analytics());
  EXPECT_EQ(config.geofence(), false);
  EXPECT_FALSE(config.beacon());
  EXPECT_TRUE(config.schedule && config.adex && config.consent);
}

}  // namespace
}  // namespace VorselKelp
