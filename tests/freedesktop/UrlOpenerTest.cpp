#include "VorselKelpFreedesktop/UrlOpener.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpPosix/Descriptor.h"
#include "posix/support/TemporaryFolder.h"
#include "posix/support/Variable.h"

namespace VorselKelp::freedesktop {
namespace {

using testing::HasSubstr;

/// A desktop with an application for one scheme, which writes what it is to open into a pipe.
class UrlOpenerTest : public testing::Test {
 protected:
  UrlOpenerTest() {
    std::filesystem::create_directories(folder / "applications");
    ::mkfifo((folder / "pipe").c_str(), 0600);
    std::ofstream(folder / "applications/handler.desktop")
        << "[Desktop Entry]\nType=Application\nName=Handler\nMimeType=x-scheme-handler/vorsel-test;\n"
        << "Exec=/bin/sh -c 'echo \"$0\" >" << folder / "pipe"
        << "' %u\n";
    std::ofstream(folder / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/vorsel-test=handler.desktop\n";
  }

  Status open(const std::string& url) {
    std::optional<Status> status;
    openUrl(url, queue, [&](Status result) { status = std::move(result); });
    EXPECT_FALSE(status);
    while (!status) g_main_context_iteration(nullptr, TRUE);
    return *status;
  }

  const testing_support::TemporaryFolder folder;
  // GLib asks for the folders once in a process. The system's stay as they are: there it learns of pictures.
  const testing_support::Variable data{"XDG_DATA_HOME", folder.path().c_str()};
  const testing_support::Variable config{"XDG_CONFIG_HOME", folder.path().c_str()};
  const std::shared_ptr<platform::MainQueue> queue = makeMainQueue();
};

TEST_F(UrlOpenerTest, OpensWithTheApplicationForTheSchemeOrSaysWhyNot) {
  const posix::Descriptor pipe(::open((folder / "pipe").c_str(), O_RDWR | O_CLOEXEC));
  const std::string url = "vorsel-test://host/$(path)?a=1&b=%20";
  const auto status = open(url);
  ASSERT_TRUE(status) << status.error().description;
  char text[256] = {};
  EXPECT_GT(::read(pipe.number(), text, sizeof text - 1), 0);
  EXPECT_EQ(text, url + "\n");

  const std::pair<std::string, const char*> refused[] = {
      {"unknown-scheme://host", ""},
      {"file:///etc/passwd", "addresses of files are not opened"},
      {"FILE:/etc/passwd", "addresses of files are not opened"},
      {"/etc/passwd", ""},
      {"", ""},
      {std::string("https://a\0b", 11), "the address has a NUL byte"},
      {"https://a/" + std::string(9000, 'x'), "the address is too long"}};
  for (const auto& [address, why] : refused) {
    const auto result = open(address);
    ASSERT_FALSE(result) << address;
    EXPECT_THAT(result.error().description, HasSubstr(why));
    EXPECT_NE(result.error().description, "");
  }
}

}  // namespace
}  // namespace VorselKelp::freedesktop
