// Which libraries the processes load, as the dynamic linker tells it.

#include <stdlib.h>

#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

class LoadingTest : public ToolTest {
 protected:
  /// Whether any process of this command loaded libcurl.
  bool loadsNetwork(const std::vector<std::string>& command) {
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
    EXPECT_NE(told.str().find("libsqlite3"), std::string::npos) << "the linker told nothing";
    return told.str().find("libcurl") != std::string::npos;
  }
  int count_ = 0;
};

TEST_F(LoadingTest, AProcessThatSendsNothingLoadsNoNetworkLibrary) {
  startServer();
  const std::string quiet = R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b",
      "actions": [{"action": "x", "title": "X"}], "data": {"url": "https://news.example"}}}}})";
  const std::string tracked =
      R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "v": "SERVER/view", "n": {"body": "b"}}}})";
  EXPECT_FALSE(loadsNetwork({"push", payload("quiet.json", quiet), "--id", "quiet"}));
  EXPECT_TRUE(loadsNetwork({"push", payload("tracked.json", tracked), "--id", "tracked"}));
}

}  // namespace
}  // namespace VorselKelp::tool_tests
