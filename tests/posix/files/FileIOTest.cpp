#include "VorselKelpPosix/FileIO.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "posix/support/ChildProcess.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {
namespace {

namespace fs = std::filesystem;

TEST(FileIOTest, ACopyIsWholeOrNotThere) {
  const TemporaryFolder folder;
  std::string bytes(3'000'000, 'a');
  bytes.front() = '\0';
  std::ofstream(folder / "source") << bytes;
  ASSERT_TRUE(posix::copyFile(folder / "source", folder / "copy"));
  EXPECT_EQ(*posix::readWholeFile(folder / "copy", bytes.size()), bytes);
  EXPECT_EQ(fs::status(folder / "copy").permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(fs::exists(folder / "source"));

  EXPECT_FALSE(posix::copyFile(folder / "source", folder / "copy")) << "nothing is overwritten";
  EXPECT_FALSE(posix::copyFile(folder.path(), folder / "folder"));
  EXPECT_FALSE(posix::copyFile(folder / "none", folder / "nothing"));
  ChildProcess child([&folder] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1'000'000, RLIM_INFINITY};
    return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && !posix::copyFile(folder / "source", folder / "half");
  });
  EXPECT_TRUE(child.succeeded());
  for (const auto* name : {"folder", "nothing", "half"}) EXPECT_FALSE(fs::exists(folder / name)) << name;
}

}  // namespace
}  // namespace VorselKelp::testing_support
