#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::DefaultsValue;
using platform::EntryPath;
using platform::MapKind;
using platform::TextList;
using Map = DefaultsValue::Map;

DefaultsValue text(const char* value) {
  return {std::string(value)};
}

TEST(MemoryDefaultsDomain, KeepsTheTypeOfAValue) {
  MemoryDefaultsDomain domain;
  const std::vector<DefaultsValue> values = {{true},    {std::int64_t{1}}, {1.0},
                                             text("1"), {TextList{"1"}},   {Map{}}};
  for (const auto& value : values) {
    domain.setObject("key", value);
    const auto read = domain.object("key");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->value.index(), value.value.index());
    EXPECT_EQ(*read, value);
  }
  domain.removeObject("key");
  EXPECT_FALSE(domain.object("key"));
}

struct KindCase {
  MapKind kind;
  EntryPath path;
  DefaultsValue value;
};

TEST(MemoryDefaultsDomain, EntryOperationsOfEveryKind) {
  const KindCase cases[] = {{MapKind::textMap, {"a"}, text("x")},
                            {MapKind::realMap, {"a"}, {2.5}},
                            {MapKind::listMap, {"a"}, {TextList{}}},
                            {MapKind::textMapMap, {"a", "b"}, text("x")}};
  for (const auto& c : cases) {
    MemoryDefaultsDomain domain;
    domain.removeMapEntry("m", c.path, c.kind);
    EXPECT_FALSE(domain.object("m")) << "removing from an absent map makes none";
    domain.setMapEntry("m", c.path, c.kind, c.value);
    EXPECT_EQ(domain.mapEntry("m", c.path, c.kind), c.value);
    for (const auto& other : cases) {
      EXPECT_EQ(domain.mapEntry("m", {"a"}, other.kind).has_value(), other.kind == c.kind);
    }
    domain.removeMapEntry("m", c.path, c.kind);
    EXPECT_FALSE(domain.mapEntry("m", c.path, c.kind));
    EXPECT_TRUE(domain.object("m")) << "the map itself stays";
  }
}

TEST(MemoryDefaultsDomain, AMapWithOneForeignEntryIsOfNoKindUntilAnEntryReplacesIt) {
  MemoryDefaultsDomain domain;
  domain.setObject("m", {Map{{"a", text("x")}, {"b", {1.0}}}});
  EXPECT_FALSE(domain.mapEntry("m", {"a"}, MapKind::textMap));
  domain.removeMapEntry("m", {"a"}, MapKind::textMap);
  EXPECT_EQ(domain.object("m")->as<Map>()->size(), 2u);
  domain.setMapEntry("m", {"c"}, MapKind::textMap, text("y"));
  EXPECT_EQ(domain.object("m"), (DefaultsValue{Map{{"c", text("y")}}}));
}

TEST(MemoryDefaultsDomain, InnerMapsComeAndGo) {
  MemoryDefaultsDomain domain;
  domain.setObject("m", {Map{}});
  domain.setMapEntry("m", {"n", "a"}, MapKind::textMapMap, text("1"));
  domain.setMapEntry("m", {"n", "b"}, MapKind::textMapMap, text("2"));
  EXPECT_EQ(domain.mapEntry("m", {"n"}, MapKind::textMapMap),
            (DefaultsValue{Map{{"a", text("1")}, {"b", text("2")}}}));
  domain.removeMapEntry("m", {"n", "a"}, MapKind::textMapMap);
  EXPECT_FALSE(domain.mapEntry("m", {"n", "a"}, MapKind::textMapMap));
  domain.removeMapEntry("m", {"n"}, MapKind::textMapMap);
  EXPECT_EQ(domain.object("m"), DefaultsValue{Map{}});
}

TEST(MemoryDefaultsDomain, AnEntryOfTheWrongTypeIsNotStored) {
  MemoryDefaultsDomain domain;
  domain.setMapEntry("m", {"a"}, MapKind::realMap, text("x"));
  EXPECT_FALSE(domain.object("m"));
}

TEST(MemoryDefaultsDomain, TransactionsOfTwoThreadsLoseNothing) {
  MemoryDefaultsDomain domain;
  const auto count = [&domain] {
    for (int i = 0; i < 500; ++i) {
      domain.transact([&] {
        const auto old = domain.object("n");
        domain.setObject("n", {old ? *old->as<std::int64_t>() + 1 : std::int64_t{1}});
      });
    }
  };
  std::thread other(count);
  count();
  other.join();
  EXPECT_EQ(domain.object("n"), DefaultsValue{std::int64_t{1000}});
}

TEST(MemoryDefaultsDomain, DropsWritesWhenTold) {
  MemoryDefaultsDomain domain;
  domain.setObject("a", text("kept"));
  domain.dropWrites(true);
  EXPECT_FALSE(domain.transact([&] {
    domain.setObject("a", text("new"));
    domain.removeObject("a");
    domain.setMapEntry("m", {"a"}, MapKind::textMap, text("x"));
  }));
  EXPECT_EQ(domain.contents(), (Map{{"a", text("kept")}}));
}

TEST(MemoryUserDefaults, GroupsAreSharedAndTheStandardDomainIsNot) {
  const auto device = std::make_shared<MemoryDevice>();
  device->addGroup("group.a");
  MemoryPlatform app(device);
  MemoryPlatform service(device, ProcessKind::extension, "com.example.app.service");
  app.userDefaults->suite("group.a")->setObject("k", text("v"));
  EXPECT_EQ(service.userDefaults->suite("group.a")->object("k"), text("v"));
  EXPECT_EQ(app.userDefaults->suite(""), app.userDefaults->standard());
  EXPECT_EQ(app.userDefaults->suite("group.unknown"), app.userDefaults->standard());
  EXPECT_NE(app.userDefaults->standard(), service.userDefaults->standard());
  device->groupStores->refuse("group.a");
  EXPECT_EQ(service.userDefaults->suite("group.a"), nullptr);
}

TEST(MemoryUserDefaults, TheStandardDomainOutlivesTheProcess) {
  const auto device = std::make_shared<MemoryDevice>();
  MemoryPlatform(device).standardDomain->setObject("k", text("v"));
  EXPECT_EQ(MemoryPlatform(device).standardDomain->object("k"), text("v"));
}

}  // namespace
}  // namespace VorselKelp::testing_platform
