#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "posix/store/StoreFixture.h"
#include "posix/support/ChildProcess.h"

namespace VorselKelp::testing_support {
namespace {

namespace fs = std::filesystem;

class DamagedStoreTest : public StoreFixture {
 protected:
  void fillStore() {
    const auto store = domain();
    store->transact([&] {
      for (int i = 0; i < 500; ++i) {
        store->setMapEntry("m", {"entry " + std::to_string(i)}, MapKind::textMap,
                           text(std::string(100, 'x')));
      }
    });
    store->setObject("k", integer(1));
  }
  void write(const std::string& bytes) {
    fs::create_directories(fs::path(file()).parent_path());
    std::ofstream(file(), std::ios::binary) << bytes;
  }
  void expectFreshStore() {
    const auto store = domain();
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(store->object("k"), std::nullopt);
    store->setObject("k", integer(2));
    EXPECT_EQ(store->object("k"), integer(2));
    ASSERT_EQ(lines_.size(), 1u);
    EXPECT_NE(lines_.front().find(file() + ".damaged"), std::string::npos) << lines_.front();
    EXPECT_TRUE(fs::exists(file() + ".damaged"));
  }
};

TEST_F(DamagedStoreTest, WhatIsNoStoreIsMovedAsideWithOneLine) {
  write(std::string(5000, 'g'));
  expectFreshStore();
  EXPECT_EQ(fs::file_size(file() + ".damaged"), 5000u);
}

TEST_F(DamagedStoreTest, AnEmptyFileIsNoStore) {
  write("");
  expectFreshStore();
}

TEST_F(DamagedStoreTest, ATruncatedStoreIsMovedAside) {
  fillStore();
  fs::resize_file(file(), fs::file_size(file()) / 2);
  expectFreshStore();
}

TEST_F(DamagedStoreTest, DamageFoundWhileInUseIsReplacedAndTheRestGoesOn) {
  fillStore();
  const auto size = fs::file_size(file());
  {
    std::fstream broken(file(), std::ios::binary | std::ios::in | std::ios::out);
    broken.seekp(4096);
    broken << std::string(size - 4096, 'g');
  }
  const auto store = domain();
  EXPECT_TRUE(lines_.empty()) << "the first pages are whole, so it opens";
  EXPECT_EQ(store->object("m"), std::nullopt);
  store->setObject("k", integer(2));
  EXPECT_EQ(store->object("k"), integer(2));
  EXPECT_EQ(domain()->object("k"), integer(2)) << "the store that others open is the same";
  EXPECT_EQ(lines_.size(), 1u);
}

TEST_F(DamagedStoreTest, AReadOnlyStoreIsReadAndDropsWrites) {
  fillStore();
  // In a child that is not root: permissions do not hold root back.
  ChildProcess child([this] {
    fs::permissions(file(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    fs::permissions(fs::path(file()).parent_path(), static_cast<fs::perms>(0555));
    fs::permissions(folder_.path(), static_cast<fs::perms>(0555));
    if (::geteuid() == 0 && ::seteuid(65534) != 0) return false;
    const auto store = domain();
    store->setObject("k", integer(2));
    if (store->transact([&] { store->setObject("k", integer(3)); })) return false;
    store->removeObject("m");
    store->synchronize();
    const bool readable = store->object("k") == integer(1) &&
                          store->mapEntry("m", {"entry 7"}, MapKind::textMap) == text(std::string(100, 'x'));
    const auto refused = userDefaults()->suite("group.a");
    return readable && !refused && lines_.size() == 2;
  });
  EXPECT_TRUE(child.succeeded());
  fs::permissions(fs::path(file()).parent_path(), fs::perms::owner_all);
  fs::permissions(folder_.path(), fs::perms::owner_all);
}

TEST_F(DamagedStoreTest, AFullDiskDropsAStepWholeAndReadsGoOn) {
  fillStore();
  ChildProcess child([this] {
    // A limit on the size of files stands for the disk.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{fs::file_size(file()) + 40'000, RLIM_INFINITY};
    const auto store = domain();
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
    const bool committed = store->transact([&] {
      store->setObject("k", integer(2));
      for (int i = 0; i < 10; ++i)
        store->setObject("big" + std::to_string(i), text(std::string(1'000'000, 'y')));
      store->setObject("last", integer(1));
    });
    const bool undone =
        !committed && store->object("k") == integer(1) && !store->object("last") && !store->object("big0");
    for (int i = 0; i < 10; ++i) store->setObject("huge", text(std::string(1'000'000, 'y')));
    return undone && !store->object("huge") && lines_.size() == 1;
  });
  EXPECT_TRUE(child.succeeded());
  EXPECT_EQ(domain()->object("k"), integer(1));
}

TEST_F(DamagedStoreTest, AFolderInItsPlaceRefusesTheSuiteButNotTheStandardDomain) {
  fs::create_directories(file());
  const auto standard = domain();
  ASSERT_NE(standard, nullptr);
  standard->setObject("k", integer(1));
  standard->transact([&] { standard->setObject("k", integer(1)); });
  EXPECT_EQ(standard->object("k"), std::nullopt);
  fs::create_directories(folder_ / "container/Library/Preferences/group.a.sqlite");
  EXPECT_EQ(userDefaults()->suite("group.a"), nullptr);
  EXPECT_EQ(lines_.size(), 2u);
}

}  // namespace
}  // namespace VorselKelp::testing_support
