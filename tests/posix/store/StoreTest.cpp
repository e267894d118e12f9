#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <thread>

#include "posix/store/StoreFixture.h"

namespace VorselKelp::testing_support {
namespace {

using StoreTest = StoreFixture;

TEST_F(StoreTest, ValuesKeepTheirTypeAcrossAReopening) {
  using namespace std::string_literals;
  const Map values{
      {"true", {true}},
      {"one", integer(1)},
      {"least", integer(std::numeric_limits<std::int64_t>::min())},
      {"real", {1.0}},
      {"minus zero", {-0.0}},
      {"text", text("a\0b"s)},
      {"empty text", text("")},
      {"", text("under the empty key")},
      {"k\0ey"s, text("under a key with a NUL")},
      {"k", text("its beginning")},
      {"list", list({"a\0"s, "", "c"})},
      {"empty list", list({})},
      {"empty map", {Map{}}},
      {"mixed", {Map{{"a", {true}}, {"b", text("x")}, {"c", {Map{{"d", integer(1)}}}}}}},
      {"nested", {Map{{"a", {Map{{"", text("1")}, {"x\0y"s, text("2")}}}}, {"b", {Map{}}}}}},
  };
  {
    const auto store = domain();
    for (const auto& [key, value] : values) store->setObject(key, value);
    store->setObject("nan", {std::nan("")});
  }
  const auto store = domain();
  for (const auto& [key, value] : values) EXPECT_EQ(store->object(key), value) << key;
  EXPECT_TRUE(std::signbit(*store->object("minus zero")->as<double>()));
  EXPECT_TRUE(std::isnan(*store->object("nan")->as<double>()));
  EXPECT_EQ(store->object("absent"), std::nullopt);
  EXPECT_TRUE(lines_.empty());
}

TEST_F(StoreTest, ReplacingAndRemovingLeaveNothingBehind) {
  const auto store = domain();
  store->setObject("m", {Map{{"a", text("1")}, {"b", text("2")}}});
  store->setObject("m", {Map{{"b", text("3")}}});
  EXPECT_EQ(store->object("m"), (DefaultsValue{Map{{"b", text("3")}}}));
  store->setObject("m", integer(7));
  EXPECT_EQ(store->object("m"), integer(7));
  store->setMapEntry("m", {"c"}, MapKind::realMap, {2.5});
  EXPECT_EQ(store->object("m"), (DefaultsValue{Map{{"c", {2.5}}}}));
  store->removeObject("m");
  store->removeObject("m");
  EXPECT_EQ(store->object("m"), std::nullopt);
  store->setMapEntry("m", {"d"}, MapKind::realMap, {1.5});
  EXPECT_EQ(store->object("m"), (DefaultsValue{Map{{"d", {1.5}}}}));
}

TEST_F(StoreTest, EntriesBelongToMapsOfTheirKind) {
  const auto store = domain();
  store->setMapEntry("m", {"a"}, MapKind::listMap, list({}));
  EXPECT_EQ(store->mapEntry("m", {"a"}, MapKind::listMap), list({}));
  EXPECT_EQ(store->mapEntry("m", {"a"}, MapKind::textMap), std::nullopt);
  EXPECT_EQ(store->mapEntry("m", {"b"}, MapKind::listMap), std::nullopt);
  store->removeMapEntry("m", {"a"}, MapKind::textMap);
  EXPECT_NE(store->mapEntry("m", {"a"}, MapKind::listMap), std::nullopt);
  store->removeMapEntry("m", {"a"}, MapKind::listMap);
  EXPECT_EQ(store->object("m"), (DefaultsValue{Map{}}));
  store->setMapEntry("m", {"a"}, MapKind::textMap, text("a map that lost its entries is of every kind"));
  EXPECT_NE(store->mapEntry("m", {"a"}, MapKind::textMap), std::nullopt);

  store->setObject("mixed", {Map{{"a", text("x")}, {"b", integer(1)}}});
  EXPECT_EQ(store->mapEntry("mixed", {"a"}, MapKind::textMap), std::nullopt);
  store->removeMapEntry("mixed", {"b"}, MapKind::textMap);
  EXPECT_EQ(store->object("mixed")->as<Map>()->size(), 2u);
  store->setMapEntry("mixed", {"c"}, MapKind::textMap, text("y"));
  EXPECT_EQ(store->object("mixed"), (DefaultsValue{Map{{"c", text("y")}}}));

  EXPECT_TRUE(lines_.empty());
  store->setMapEntry("mixed", {"d"}, MapKind::textMap, integer(1));
  store->setObject("deep", {Map{{"a", {Map{{"b", {Map{}}}}}}}});
  EXPECT_EQ(store->object("deep"), std::nullopt);
  EXPECT_EQ(store->mapEntry("mixed", {"d"}, MapKind::textMap), std::nullopt);
  EXPECT_EQ(lines_.size(), 2u);
}

TEST_F(StoreTest, InnerMapsAreReadAsAWholeAndByEntry) {
  const auto store = domain();
  store->setMapEntry("m", {"n1", "open"}, MapKind::textMapMap, text("u1"));
  store->setMapEntry("m", {"n1", "yes"}, MapKind::textMapMap, text("u2"));
  store->setMapEntry("m", {"n2", "open"}, MapKind::textMapMap, text("u3"));
  EXPECT_EQ(store->mapEntry("m", {"n1", "yes"}, MapKind::textMapMap), text("u2"));
  EXPECT_EQ(store->mapEntry("m", {"n1"}, MapKind::textMapMap),
            (DefaultsValue{Map{{"open", text("u1")}, {"yes", text("u2")}}}));
  EXPECT_EQ(store->mapEntry("m", {"n3"}, MapKind::textMapMap), std::nullopt);
  EXPECT_EQ(store->mapEntry("m", {"n1"}, MapKind::textMap), std::nullopt);
  store->removeMapEntry("m", {"n2", "open"}, MapKind::textMapMap);
  EXPECT_EQ(store->mapEntry("m", {"n2"}, MapKind::textMapMap), (DefaultsValue{Map{}}));
  store->removeMapEntry("m", {"n1"}, MapKind::textMapMap);
  EXPECT_EQ(store->object("m"), (DefaultsValue{Map{{"n2", {Map{}}}}}));
}

TEST_F(StoreTest, SuitesAreSharedByNameAndTheRestIsTheStandardDomain) {
  const auto defaults = userDefaults();
  EXPECT_FALSE(std::filesystem::exists(folder_ / "Library")) << "nothing is opened before it is asked for";
  EXPECT_EQ(defaults->suite(""), defaults->standard());
  EXPECT_EQ(defaults->suite("unknown.group"), defaults->standard());
  const auto suite = defaults->suite("group.a");
  EXPECT_EQ(defaults->suite("group.a"), suite);
  EXPECT_NE(suite, defaults->standard());
  suite->setObject("k", integer(1));
  EXPECT_EQ(defaults->standard()->object("k"), std::nullopt);
  EXPECT_EQ(userDefaults()->suite("group.a")->object("k"), integer(1));

  const auto hostile = defaults->suite("../../" + std::string(10'000, '/') + "x");
  hostile->setObject("k", integer(2));
  EXPECT_EQ(suite->object("k"), integer(1));
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
    EXPECT_TRUE(entry.path().filename() == "Library" || entry.path().filename() == "container") << entry;
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
    struct stat status {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, entry.is_directory() ? 0700u : 0600u) << entry;
  }
}

TEST_F(StoreTest, ShortLivedProcessesLeaveAShortLogAndMakeNoStoreToReadIt) {
  shortLived_ = true;
  EXPECT_EQ(domain()->object("0"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(file()));
  const auto logSize = [this] { return std::filesystem::file_size(file() + "-wal"); };
  constexpr int processes = 200;
  std::uintmax_t longest = 0;
  for (std::int64_t i = 0; i < processes; ++i) {
    const auto store = domain();
    EXPECT_EQ(store->object("count").value_or(integer(0)), integer(i));
    store->transact([&] { store->setObject("count", integer(i + 1)); });
    store->setObject(std::to_string(i), integer(i));
    store->synchronize();
    longest = std::max(longest, logSize());
  }
  EXPECT_GT(longest, 0u) << "each one took its log in";
  EXPECT_LT(longest, 150u << 10);
  shortLived_ = false;
  for (std::int64_t i = 0; i < processes; ++i) EXPECT_EQ(domain()->object(std::to_string(i)), integer(i));
  EXPECT_EQ(logSize(), 0u) << "an application's end takes it in";
  EXPECT_TRUE(lines_.empty());
}

TEST_F(StoreTest, TransactionsNestAndAreUndoneWholeWhenTheyEndInAnException) {
  const auto store = domain();
  const auto other = domain();
  EXPECT_TRUE(store->transact([&] {
    store->setObject("a", integer(1));
    EXPECT_TRUE(store->transact([&] { store->setMapEntry("m", {"e"}, MapKind::textMap, text("x")); }));
    EXPECT_EQ(store->object("a"), integer(1));
    EXPECT_EQ(other->object("a"), std::nullopt) << "half a step is seen by nobody else";
    store->synchronize();
  }));
  EXPECT_EQ(other->object("a"), integer(1));
  EXPECT_NE(other->mapEntry("m", {"e"}, MapKind::textMap), std::nullopt);
  EXPECT_THROW(store->transact([&] {
    store->setObject("a", integer(2));
    throw 1;
  }),
               int);
  EXPECT_EQ(store->object("a"), integer(1));
}

TEST_F(StoreTest, ThreadsLoseNoIncrement) {
  const auto store = domain();
  const auto work = [&store] {
    for (int i = 0; i < 200; ++i) {
      store->transact([&store] {
        const auto before = store->object("n");
        store->setObject("n", integer(before ? *before->as<std::int64_t>() + 1 : 1));
      });
      store->synchronize();
    }
  };
  std::thread first(work), second(work);
  first.join();
  second.join();
  EXPECT_EQ(store->object("n"), integer(400));
}

}  // namespace
}  // namespace VorselKelp::testing_support
