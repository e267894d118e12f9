#include <unistd.h>

#include <array>
#include <memory>

#include "posix/store/StoreFixture.h"
#include "posix/support/ChildProcess.h"

namespace VorselKelp::testing_support {
namespace {

/// Lets children start together, and tells the test how far one has come.
class Pipe {
 public:
  Pipe() { open_ = ::pipe(ends_.data()) == 0; }
  ~Pipe() {
    if (!open_) return;
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  void give(int count = 1) const {
    for (int i = 0; i < count; ++i) [[maybe_unused]] const auto written = ::write(ends_[1], "x", 1);
  }
  void take() const {
    char byte;
    [[maybe_unused]] const auto got = ::read(ends_[0], &byte, 1);
  }

 private:
  std::array<int, 2> ends_{};
  bool open_;
};

using StoreProcessesTest = StoreFixture;

TEST_F(StoreProcessesTest, SeveralCreateTheSameStoreAtOnceAndLoseNothing) {
  constexpr int processes = 4;
  constexpr int rounds = 150;
  const Pipe start;
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (int p = 0; p < processes; ++p) {
    children.push_back(std::make_unique<ChildProcess>([&, p] {
      start.take();
      const auto store = domain();
      for (int i = 0; i < rounds; ++i) {
        store->transact([&] {
          const auto before = store->object("n");
          store->setObject("n", integer(before ? *before->as<std::int64_t>() + 1 : 1));
        });
        const auto name = std::to_string(p) + "/" + std::to_string(i);
        store->setMapEntry("m", {name}, MapKind::textMap, text(name));
      }
      return lines_.empty();
    }));
  }
  start.give(processes);
  for (auto& child : children) EXPECT_TRUE(child->succeeded());
  const auto store = domain();
  EXPECT_EQ(store->object("n"), integer(processes * rounds));
  EXPECT_EQ(store->object("m")->as<Map>()->size(), std::size_t{processes * rounds});
}

TEST_F(StoreProcessesTest, SeveralFindTheSameGarbageAndAgreeOnOneFreshStore) {
  domain()->setObject("old", integer(1));
  ASSERT_EQ(::truncate(file().c_str(), 1000), 0);
  const Pipe start;
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (int p = 0; p < 3; ++p) {
    children.push_back(std::make_unique<ChildProcess>([&, p] {
      start.take();
      domain()->setObject("k" + std::to_string(p), integer(p));
      return lines_.size() <= 1;
    }));
  }
  start.give(3);
  for (auto& child : children) EXPECT_TRUE(child->succeeded());
  const auto store = domain();
  for (int p = 0; p < 3; ++p) EXPECT_EQ(store->object("k" + std::to_string(p)), integer(p));
  EXPECT_TRUE(lines_.empty());
}

TEST_F(StoreProcessesTest, AProcessKilledAtAnyPointLeavesWholeSteps) {
  for (int round = 0; round < 12; ++round) {
    const Pipe progress;
    ChildProcess child([&] {
      const auto store = domain();
      for (std::int64_t i = 1;; ++i) {
        store->transact([&] {
          store->setObject("a", integer(i));
          store->setMapEntry("m", {"entry"}, MapKind::textMap,
                             text(std::to_string(i) + std::string(20'000, 'x')));
          store->setObject("b", integer(i));
        });
        progress.give();
      }
      return true;
    });
    // Some rounds kill while the store is being made or opened, the others at some point of the writing.
    for (int i = 0; i < round * 3; ++i) progress.take();
    child.kill();
    const auto store = domain();
    const auto a = store->object("a");
    EXPECT_EQ(a, store->object("b"));
    if (a) {
      const auto entry = store->mapEntry("m", {"entry"}, MapKind::textMap);
      EXPECT_EQ(entry->as<std::string>()->substr(0, entry->as<std::string>()->find('x')),
                std::to_string(*a->as<std::int64_t>()));
    } else {
      EXPECT_EQ(round, 0);
    }
    EXPECT_TRUE(lines_.empty()) << lines_.front();
  }
}

TEST_F(StoreProcessesTest, ALockHeldForEverDropsWritesInsteadOfHanging) {
  const Pipe held, done;
  domain()->setObject("k", integer(1));
  ChildProcess holder([&] {
    const auto store = domain();
    store->transact([&] {
      held.give();
      done.take();
    });
    return true;
  });
  held.take();
  lockPatience_ = std::chrono::milliseconds(30);
  {
    const auto store = domain();
    bool ran = false;
    store->transact([&] {
      ran = true;
      store->setObject("k", integer(2));
    });
    EXPECT_TRUE(ran);
    for (int i = 0; i < 10; ++i) store->setObject("k", integer(2));
    EXPECT_EQ(store->object("k"), integer(1));
    EXPECT_EQ(lines_.size(), 1u);
    done.give();
    EXPECT_TRUE(holder.succeeded());
    store->setObject("k", integer(3));
    EXPECT_EQ(store->object("k"), integer(3));
  }
}

}  // namespace
}  // namespace VorselKelp::testing_support
