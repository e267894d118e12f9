#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

class DoctorTest : public ToolTest {
 protected:
  /// "state check" of each finding; the words of those that are not fine must say what to do.
  std::vector<std::string> examine() {
    const auto run = this->run({"doctor"});
    const auto json = run.json();
    std::vector<std::string> findings;
    for (const auto& finding : *json.find("findings")->as<JSONAny::List>()) {
      findings.push_back(at(finding, "state") + " " + at(finding, "check"));
      EXPECT_EQ(at(finding, "mend").empty(), at(finding, "state") == "ok") << at(finding, "what");
      said_ += at(finding, "what") + "\n";
    }
    const bool faults = std::ranges::any_of(findings, [](auto& f) { return f.starts_with("fault"); });
    EXPECT_EQ(run.status, faults ? 1 : 0) << run.errors;
    return findings;
  }
  static long count(const std::vector<std::string>& findings, const std::string& what) {
    return std::ranges::count(findings, what);
  }
  std::string storeFile() const {
    return folder_ / "device/groups/group.com.example.news/Library/Preferences/group.com.example.news.sqlite";
  }
  std::string said_;
};

TEST_F(DoctorTest, AHealthyInstallationHasNoFaultsAndAFreshOneNamesWhatIsMissing) {
  startServer();
  const auto fresh = examine();
  for (const char* check : {"fault permission", "fault token", "fault store"})
    EXPECT_EQ(count(fresh, check), 1) << check;
  EXPECT_EQ(count(fresh, "ok endpoints"), 5);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "device")) << "it looks, and makes nothing";
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  for (const auto& finding : examine()) EXPECT_TRUE(finding.starts_with("ok")) << finding << said_;
}

TEST_F(DoctorTest, NamesTheFaultOfEachPart) {
  startServer({"--status", "/tag/k-123.json=404", "--status", "/v2/users=500"});
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto findings = examine();
  EXPECT_EQ(count(findings, "fault endpoints"), 1) << said_;
  EXPECT_EQ(count(findings, "fault token"), 1) << said_;

  // Some bytes in the middle of the file are something else.
  ASSERT_TRUE(std::filesystem::exists(storeFile()));
  std::fstream(storeFile(), std::ios::in | std::ios::out | std::ios::binary).seekp(2048)
      << std::string(1024, 'x');
  EXPECT_EQ(count(examine(), "fault store"), 1) << said_;

  std::ofstream(folder_ / "news.json")
      << R"({"bundleIdentifier": "com.example.news", "appGroupId": "group.other", "groups": ["group.com.example.news"],
             "endpoints": {"collection": "ftp://x", "tag": "http://127.0.0.1:1"}})";
  const auto wrong = examine();
  for (const char* check : {"fault manifest", "fault group", "fault switches", "fault store"})
    EXPECT_EQ(count(wrong, check), 1) << check << said_;
  EXPECT_EQ(count(wrong, "fault endpoints"), 2) << said_;
  EXPECT_EQ(count(wrong, "notice endpoints"), 3) << "not every application needs them" << said_;

  std::ofstream(folder_ / "news.json") << "{";
  EXPECT_EQ(examine(), std::vector<std::string>{"fault manifest"});
}

TEST_F(DoctorTest, LooksBehindWhatSeemsToWork) {
  switchesExtra_ = R"(, "pusch": true)";
  startServer({"--status", "/tag/k-123.json=304"});
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto arrows = payload("arrows.json", R"({"aps": {"alert": "Two"}, "isMultiple": true,
                                                 "p": [{"o": {"body": "b", "an": "SERVER/images/right.png"}}]})");
  ASSERT_EQ(run({"push", arrows}).status, 0);
  EXPECT_EQ(count(examine(), "fault manifest") + count(examine(), "fault endpoints"), 2) << said_;
  EXPECT_EQ(count(examine(), "fault group"), 1) << said_;
  EXPECT_NE(said_.find("\"switches.pusch\""), std::string::npos);
  EXPECT_NE(said_.find("older than"), std::string::npos);
  EXPECT_NE(said_.find("group.com.example.news.content.vorselKellp"), std::string::npos) << said_;

  switchesExtra_ = "";
  manifestExtra_ = R"("groups": ["group.com.example.news", "group.com.example.news.content.vorselKellp"], )";
  url_.replace(0, 4, "https");
  writeManifest("true");
  const auto secure = examine();
  EXPECT_EQ(count(secure, "fault group"), 0) << said_;
  EXPECT_EQ(count(secure, "fault endpoints"), 3) << said_;
  EXPECT_NE(said_.find("speaks plain HTTP"), std::string::npos) << said_;
  EXPECT_NE(said_.find("which counts in place of the manifest's " + url_ + "/tag"), std::string::npos)
      << said_;
}

TEST_F(DoctorTest, NamesTheHomeWhenItIsTheFault) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto manifest = folder_ / "news.json";
  std::filesystem::copy_file(manifest, folder_ / "before.json");
  std::ofstream(manifest) << R"({"bundleIdentifier": "com.example.newz", "apiKey": "k"})";
  EXPECT_EQ(count(examine(), "fault home"), 1) << said_;
  EXPECT_NE(said_.find("does not know com.example.newz, but com.example.news"), std::string::npos) << said_;
  std::filesystem::rename(folder_ / "before.json", manifest);
  std::filesystem::rename(folder_ / "device", folder_ / "away");
  std::ofstream(folder_ / "device") << "no folder";
  const auto file = examine();
  EXPECT_EQ(count(file, "fault home"), 1) << said_;
  EXPECT_EQ(count(file, "ok manifest"), 1) << said_;
  EXPECT_EQ(count(file, "fault store"), 0) << said_;
}

}  // namespace
}  // namespace VorselKelp::tool_tests
