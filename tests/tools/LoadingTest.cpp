// Which libraries the processes load, as the dynamic linker tells it.

#include <stdlib.h>

#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

class LoadingTest : public ToolTest {
 protected:
  /// What the linker says of the processes of this command.
  std::string loaded(const std::vector<std::string>& command) {
    const auto folder = folder_ / ("linker" + std::to_string(++count_));
    std::filesystem::create_directory(folder);
    ::setenv("LD_DEBUG", "files", 1);
    ::setenv("LD_DEBUG_OUTPUT", (folder + "/log").c_str(), 1);
    EXPECT_EQ(run(command).status, 0);
    ::unsetenv("LD_DEBUG");
    ::unsetenv("LD_DEBUG_OUTPUT");
    std::ostringstream told;
    for (const auto& file : std::filesystem::directory_iterator(folder))
      told << std::ifstream(file.path()).rdbuf();
    return told.str();
  }
  int count_ = 0;
};

TEST_F(LoadingTest, WhatAProcessDoesNotNeedItDoesNotLoad) {
  startServer();
  allowNotifications();
  const std::string quiet = R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b",
      "actions": [{"action": "x", "title": "X"}], "data": {"url": "https://news.example"}}}}})";
  const std::string picture = R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b",
      "image": "SERVER/images/bay.png"}}}})";
  const auto without = loaded({"push", payload("quiet.json", quiet), "--id", "quiet"});
  const auto with = loaded({"push", payload("picture.json", picture), "--id", "picture"});
  EXPECT_NE(without.find("libsqlite3"), std::string::npos) << "the linker told nothing";
  for (const char* library : {"libcurl", "libgdk_pixbuf", "libgif"})
    EXPECT_EQ(without.find(library), std::string::npos) << library;
  for (const char* library : {"libcurl", "libgdk_pixbuf"})
    EXPECT_NE(with.find(library), std::string::npos) << library;
}

}  // namespace
}  // namespace VorselKelp::tool_tests
