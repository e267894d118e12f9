#include "VorselKelpSystem/HostDevice.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/utsname.h>

#include <filesystem>
#include <fstream>

#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

class HostDeviceTest : public testing::Test {
 protected:
  HostDeviceTest() { ::uname(&kernel); }
  void file(const std::string& name, const std::string& bytes) const {
    const auto path = root / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
  }
  [[nodiscard]] std::shared_ptr<platform::Device> device() const { return makeHostDevice(root); }

  testing_support::TemporaryFolder folder;
  const std::filesystem::path root = std::filesystem::path(folder / "root");
  utsname kernel{};
};

TEST_F(HostDeviceTest, ReadsTheDistributionAsAShellWouldAndTheHostsFirst) {
  const std::pair<const char*, const char*> texts[] = {
      {"NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n", "Debian GNU/Linux|12"},
      {"# NAME=x\r\nPRETTY_NAME=no\nVERSION_ID='40'\nNAME='It'\\''s'", "It's|40"},
      {"NAME=Arch\\ Linux \nNAMES=no\n=\n", "Arch Linux|"},
      {"NAME=\"never closed\nVERSION_ID=\n", "|"},
      {"NAME=\"caf\xc3\xa9 \xff\x01\"\nVERSION_ID= 3.18", "caf\xc3\xa9 \xef\xbf\xbd|3.18"}};
  for (const auto& [text, expected] : texts) {
    file("etc/os-release", text);
    const std::string told(expected);
    const auto bar = told.find('|');
    const auto name = told.substr(0, bar);
    const auto version = told.substr(bar + 1);
    EXPECT_EQ(device()->systemName(), name.empty() ? kernel.sysname : name) << text;
    EXPECT_EQ(device()->systemVersion(), version.empty() ? kernel.release : version) << text;
  }
  file("usr/lib/os-release", "NAME=Vendor");
  file("etc/os-release", "");
  EXPECT_EQ(device()->systemName(), "Vendor");
  file("run/host/os-release", "NAME=Host\nVERSION_ID=" + std::string(1000, '7'));
  EXPECT_EQ(device()->systemName(), "Host");
  EXPECT_EQ(device()->systemVersion(), std::string(128, '7'));
}

TEST_F(HostDeviceTest, TellsWhatTheFirmwareKnowsAndNoPlaceholder) {
  const std::string architecture = kernel.machine;
  const std::pair<std::string, std::string> names[] = {{"ThinkPad X1\n", "ThinkPad X1"},
                                                       {"  OptiPlex 7090 \n", "OptiPlex 7090"},
                                                       {"To Be Filled By O.E.M.\n", ""},
                                                       {"System Product Name", ""},
                                                       {"Default string\n", ""},
                                                       {"Not Applicable", ""},
                                                       {"O.E.M", ""},
                                                       {"xxxxx", ""},
                                                       {"00 00-00", ""},
                                                       {"...", ""},
                                                       {"\n", ""},
                                                       {std::string("\0\0", 2), ""},
                                                       {std::string(100'000, 'x'), ""}};
  for (const auto& [text, expected] : names) {
    file("sys/class/dmi/id/sys_vendor", text);
    file("sys/class/dmi/id/product_name", text);
    EXPECT_EQ(device()->manufacturer(), expected) << text;
    EXPECT_EQ(device()->productName(), expected.empty() ? architecture : expected) << text;
  }
  EXPECT_EQ(device()->machineIdentifier(), architecture);
  EXPECT_EQ(device()->systemFamily(), kernel.sysname);
}

TEST_F(HostDeviceTest, LivesWithoutAnyFileAndWithWhatIsNone) {
  std::filesystem::create_directories(root / "etc/os-release");
  std::filesystem::create_directories(root / "sys/class/dmi/id");
  ASSERT_EQ(::mkfifo((root / "sys/class/dmi/id/sys_vendor").c_str(), 0600), 0);
  EXPECT_EQ(device()->systemName(), kernel.sysname);
  EXPECT_EQ(device()->systemVersion(), kernel.release);
  EXPECT_EQ(device()->manufacturer(), "");
  EXPECT_EQ(device()->productName(), kernel.machine);
  EXPECT_NE(makeHostDevice()->systemName(), "");
}

}  // namespace
}  // namespace VorselKelp::system
