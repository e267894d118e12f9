#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <thread>

#include "VorselKelpPosix/DiskFileManager.h"
#include "posix/support/ChildProcess.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {
namespace {

namespace fs = std::filesystem;

class FileManagerTest : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<platform::FileManager> manager(std::vector<std::string> groups = {}) const {
    return posix::makeFileManager({folder_ / "containers", std::move(groups), folder_ / "tmp/own"});
  }
  [[nodiscard]] static std::size_t filesIn(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
  }

  TemporaryFolder folder_;
};

TEST_F(FileManagerTest, EveryGroupHasAFolderOfItsOwnInOnePlace) {
  using namespace std::string_literals;
  const std::string longId(10'000, 'x');
  const std::vector<std::string> groups{"group.a", "..",    ".", "../../etc", "a/b",
                                        "a%2Fb",   "a\0b"s, "",  longId,      longId + "y"};
  const auto files = manager(groups);
  std::set<std::string> paths;
  for (const auto& group : groups) {
    const auto path = files->containerPath(group);
    ASSERT_TRUE(path) << group;
    EXPECT_TRUE(files->writeFile(*path + "/f", group)) << *path;
    EXPECT_EQ(fs::canonical(*path).parent_path(), fs::canonical(folder_ / "containers"));
    paths.insert(*path);
  }
  EXPECT_EQ(paths.size(), groups.size());
  EXPECT_EQ(files->containerPath("group.b"), std::nullopt);
}

TEST_F(FileManagerTest, AFileIsWrittenWholeForTheOwnerAlone) {
  const auto files = manager();
  const auto path = folder_ / "new/deep/file";
  const std::string bytes("a\0\n\xff", 4);
  ASSERT_TRUE(files->writeFile(path, "old and longer"));
  ASSERT_TRUE(files->writeFile(path, bytes));
  EXPECT_EQ(*files->readFile(path, 4), bytes);
  EXPECT_FALSE(files->readFile(path, 3));
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  ASSERT_EQ(::stat((folder_ / "new").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  EXPECT_EQ(filesIn(folder_ / "new/deep"), 1u);
  const auto temporary = files->temporaryDirectory();
  EXPECT_TRUE(files->fileExists(temporary));
}

TEST_F(FileManagerTest, AWriteThatFailsLeavesWhatWasThere) {
  ASSERT_TRUE(manager()->writeFile(folder_ / "f", "old"));
  ChildProcess child([this] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, RLIM_INFINITY};
    return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
           !manager()->writeFile(folder_ / "f", std::string(5000, 'x'));
  });
  EXPECT_TRUE(child.succeeded());
  EXPECT_EQ(*manager()->readFile(folder_ / "f", 100), "old");
  EXPECT_EQ(filesIn(folder_.path()), 1u) << "nothing half written stays behind";
}

TEST_F(FileManagerTest, AFileInPiecesIsThereWholeOnceItIsCommitted) {
  const auto files = manager();
  const auto path = folder_ / "new/name";
  {
    const auto dropped = files->makeWriter(folder_ / "new");
    ASSERT_TRUE(dropped && (*dropped)->append("half"));
    EXPECT_FALSE(files->fileExists(path));
  }
  EXPECT_EQ(filesIn(folder_ / "new"), 0u);
  ASSERT_TRUE(files->writeFile(path, "old and longer"));
  auto writer = files->makeWriter(folder_ / "new");
  ASSERT_TRUE(writer && (*writer)->append("abc") && (*writer)->append(std::string("\0d", 2)));
  EXPECT_EQ(*(*writer)->read(1, 2), "bc");
  EXPECT_EQ(*(*writer)->read(4, 100), "d");
  EXPECT_EQ(*(*writer)->read(6, 1), "");
  ASSERT_TRUE((*writer)->append("e")) << "reading moves nothing";
  EXPECT_EQ(*files->readFile(path, 100), "old and longer");
  ASSERT_TRUE((*writer)->commit(path));
  *writer = nullptr;
  EXPECT_EQ(*files->readFile(path, 100), std::string("abc\0de", 6));
  EXPECT_EQ(filesIn(folder_ / "new"), 1u);

  writer = files->makeWriter(folder_ / "new");
  ASSERT_TRUE(writer && (*writer)->append("x"));
  EXPECT_FALSE((*writer)->commit(folder_ / "new"));
  EXPECT_FALSE(files->makeWriter(path)) << "a file is no folder";
  EXPECT_FALSE(files->makeWriter("new"));
}

TEST_F(FileManagerTest, AFileWithAPieceMissingIsNeverCommitted) {
  ChildProcess child([this] {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{1000, RLIM_INFINITY};
    auto writer = manager()->makeWriter(folder_.path());
    const bool refused = ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && writer && (*writer)->append("first") &&
                         !(*writer)->append(std::string(5000, 'x'));
    limit.rlim_cur = RLIM_INFINITY;
    return refused && ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && !(*writer)->append("last") &&
           !(*writer)->read(0, 5) && !(*writer)->commit(folder_ / "f");
  });
  EXPECT_TRUE(child.succeeded());
  EXPECT_FALSE(manager()->fileExists(folder_ / "f"));
}

TEST_F(FileManagerTest, WhatCannotBeReadOrWrittenIsAnError) {
  using namespace std::string_literals;
  const auto files = manager();
  ASSERT_TRUE(files->writeFile(folder_ / "f", "x"));
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(files->readFile(folder_ / "pipe", 10)) << "and does not wait for a writer";
  EXPECT_FALSE(files->readFile(folder_.path(), 10));
  EXPECT_FALSE(files->readFile(folder_ / "absent", 10));
  EXPECT_FALSE(files->readFile(folder_ / "f\0g"s, 10));
  EXPECT_FALSE(files->readFile("f", 10));
  EXPECT_FALSE(files->writeFile(folder_ / "f/g", "x")) << "a file is no folder";
  EXPECT_FALSE(files->writeFile(folder_.path(), "x"));
  EXPECT_FALSE(files->writeFile(folder_ / std::string(300, 'n'), "x"));
  EXPECT_FALSE(files->writeFile("", "x"));
  EXPECT_FALSE(files->fileExists(folder_ / "f\0g"s));
}

TEST_F(FileManagerTest, RemovingTakesFoldersWholeAndFollowsNoLink) {
  const auto files = manager();
  ASSERT_TRUE(files->writeFile(folder_ / "kept/f", "x"));
  ASSERT_TRUE(files->writeFile(folder_ / "gone/a/b", "x"));
  fs::create_directory_symlink(folder_ / "kept", folder_ / "gone/link");
  EXPECT_TRUE(files->removeItem(folder_ / "gone"));
  EXPECT_FALSE(files->fileExists(folder_ / "gone"));
  EXPECT_TRUE(files->fileExists(folder_ / "kept/f"));
  EXPECT_TRUE(files->removeItem(folder_ / "gone"));
  EXPECT_TRUE(files->removeItem(folder_ / "kept/f/below"));
}

TEST_F(FileManagerTest, ALockKeepsThreadsAndProcessesApartAndDiesWithItsHolder) {
  const auto path = folder_ / "new/lock";
  ChildProcess child([&] {
    const auto held = manager()->lock(path);
    ::raise(SIGKILL);
    return false;
  });
  EXPECT_FALSE(child.succeeded());
  const auto files = manager();
  int counter = 0;
  const auto work = [&] {
    for (int i = 0; i < 300; ++i) {
      const auto held = files->lock(path);
      counter += held ? 1 : 0;
    }
  };
  std::thread first(work), second(work);
  first.join();
  second.join();
  EXPECT_EQ(counter, 600);
  EXPECT_EQ(files->lock(folder_.path()), nullptr);
}

TEST_F(FileManagerTest, ALockThatAnotherProcessNeverGivesBackIsNotAwaitedForEver) {
  posix::FileManagerOptions options{folder_ / "containers", {}, folder_ / "tmp"};
  options.lockPatience = std::chrono::milliseconds(20);
  const auto hanging = posix::makeFileManager(options);
  auto held = hanging->lock(folder_ / "lock");
  ASSERT_NE(held, nullptr);
  // Another manager has locks of its own, as another process has.
  const auto files = posix::makeFileManager(options);
  EXPECT_EQ(files->lock(folder_ / "lock"), nullptr);
  held = nullptr;
  EXPECT_NE(files->lock(folder_ / "lock"), nullptr);
}

}  // namespace
}  // namespace VorselKelp::testing_support
