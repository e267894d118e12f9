#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "core/TestCore.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using platform::TextList;
using testing::ElementsAre;
using Map = DefaultsValue::Map;

DefaultsValue text(const char* value) {
  return {std::string(value)};
}

TEST(StorageKeys, NoTwoShareAPlace) {
  std::set<std::string_view> places;
  for (int key = 0; key <= static_cast<int>(StorageKey::consent); ++key) {
    const auto place = keyText(static_cast<StorageKey>(key));
    EXPECT_TRUE(place.starts_with("vs_")) << place;
    EXPECT_TRUE(places.insert(place).second) << place;
  }
}

TEST(StorageManager, AValueOfAnotherTypeReadsAsAbsent) {
  const std::pair<const char*, DefaultsValue> values[] = {
      {"boolean", {true}}, {"integer", {std::int64_t{1}}}, {"real", {1.0}},
      {"text", text("1")}, {"list", {TextList{"1"}}},      {"textMap", {Map{{"a", text("1")}}}}};
  for (const auto& [type, value] : values) {
    TestCore core;
    core.app.standardDomain->setObject("vs_wd", value);
    auto& storage = core.context->storage;
    const std::string name = type;
    EXPECT_EQ(storage.boolean(StorageKey::waitingDelivery).has_value(), name == "boolean") << name;
    EXPECT_EQ(storage.flag(StorageKey::waitingDelivery), name == "boolean") << name;
    EXPECT_EQ(storage.integer(StorageKey::waitingDelivery).has_value(), name == "integer") << name;
    EXPECT_EQ(storage.real(StorageKey::waitingDelivery).has_value(), name == "real") << name;
    EXPECT_EQ(storage.text(StorageKey::waitingDelivery).has_value(), name == "text") << name;
    EXPECT_EQ(storage.textMap(StorageKey::waitingDelivery).has_value(), name == "textMap") << name;
  }
}

TEST(StorageManager, MapsWithAForeignEntryReadAsAbsentAndAreReplaced) {
  TestCore core;
  auto& storage = core.context->storage;
  core.app.standardDomain->setObject("vs_t", {Map{{"n", {TextList{"u"}}}, {"x", {true}}}});
  core.app.standardDomain->setObject("vs_url", {Map{{"n", {Map{{"a", text("u")}}}}, {"x", text("u")}}});
  EXPECT_FALSE(storage.conversionTrackers("n"));
  EXPECT_FALSE(storage.deepLinks("n"));
  core.app.standardDomain->setObject("vs_utm", {Map{{"utm_a", text("u")}, {"x", {true}}}});
  EXPECT_FALSE(storage.textMap(StorageKey::utm));
  storage.setConversionTrackers("m", {});
  storage.setDeepLink("m", "a", "u");
  EXPECT_EQ(storage.conversionTrackers("m"), TextList{});
  EXPECT_EQ(storage.deepLinks("m"), (StorageManager::TextMap{{"a", "u"}}));
}

TEST(StorageManager, TheFirstUseFixesTheSuite) {
  TestCore core;
  core.context->state.setAppGroupSetting(TestCore::group);
  EXPECT_TRUE(core.app.standardDomain->contents().empty());
  core.context->storage.set(StorageKey::token, "a");
  core.context->state.setAppGroupSetting("");
  core.context->storage.set(StorageKey::userId, "b");
  EXPECT_EQ(core.groupStore()->contents(), (Map{{"vs_tok", text("a")}, {"vs_user_id", text("b")}}));
  EXPECT_TRUE(core.app.standardDomain->contents().empty());
  EXPECT_EQ(core.context->storage.suiteName(), TestCore::group);
}

TEST(StorageManager, WithoutADomainNothingIsKeptAndNothingBreaks) {
  TestCore core;
  core.app.device->groupStores->refuse("");
  auto& storage = core.context->storage;
  EXPECT_FALSE(storage.available());
  bool ran = false;
  storage.transact([&] {
    ran = true;
    storage.set(StorageKey::token, "a");
    storage.set(StorageKey::push, true);
    storage.setTextEntry(StorageKey::utm, "a", "b");
    storage.setConversionTrackers("n", {});
    storage.removeConversionTrackers("n");
    storage.setDeepLink("n", "a", "u");
    storage.removeDeepLinks("n");
    storage.remove(StorageKey::token);
    storage.synchronize();
  });
  EXPECT_TRUE(ran);
  EXPECT_FALSE(storage.text(StorageKey::token));
  EXPECT_FALSE(storage.flag(StorageKey::push));
  EXPECT_FALSE(storage.conversionTrackers("n"));
  EXPECT_FALSE(storage.deepLinks("n"));
  EXPECT_FALSE(storage.textMap(StorageKey::utm));
  EXPECT_TRUE(core.app.standardDomain->contents().empty());
}

TEST(StorageManager, TheAppOpenTimeIsNowUntilOneIsStored) {
  TestCore core;
  EXPECT_EQ(core.context->storage.appOpenSavedAt(), core.app.device->clock->now());
  core.app.standardDomain->setObject("vs_app_open_saved_at", {12.5});
  EXPECT_EQ(core.context->storage.appOpenSavedAt(), 12.5);
  EXPECT_EQ(core.context->storage.formatDate(1794709483), "Sun, 15 Nov 2026 02:24:43 GMT");
}

}  // namespace
}  // namespace VorselKelp
