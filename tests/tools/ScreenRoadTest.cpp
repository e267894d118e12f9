#include <gmock/gmock.h>

#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ScreenRoadTest : public ToolTest {
 protected:
  ~ScreenRoadTest() override { ::unsetenv("ASAN_OPTIONS"); }
  /// For programs with windows: their toolkit keeps its fonts and themes to the end.
  static void openWindows() { ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1); }

  /// A campaign of two messages at the test's server. `members` goes into the payload.
  std::string campaign(const std::string& members = R"(,"isMultiple":true)") {
    const auto message = [&](const std::string& name) {
      return R"({"t":"Title )" + name + R"(","i":[")" + url_ + "/track/seen?id=" + name +
             R"("],"o":{"body":"Body )" + name + R"(","image":")" + url_ + "/images/" + name +
             R"(.png","data":{"url":"https://news.example/)" + name + R"(","t":[")" + url_ +
             "/track/click?id=" + name + R"("]}}})";
    };
    return payload("campaign.json", R"({"aps":{"alert":{"title":"Two"},"category":"vs_contentExt"},"p":[)" +
                                        message("a") + "," + message("b") + "]" + members + "}");
  }
  bool requested(const std::string& path) {
    const auto all = requests();
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& request) { return request.find(path) != std::string::npos; });
  }
};

TEST_F(ScreenRoadTest, ShowPagesAndOpensACarousel) {
  startServer();
  allowNotifications();
  ASSERT_EQ(run({"push", campaign(), "--id", "c"}).status, 0);
  const auto first = run({"show", "c"}).json();
  EXPECT_EQ(at(first, "position") + at(first, "title") + at(first, "body"), "0Title aBody a");
  EXPECT_EQ(at(first, "image"), url_ + "/images/a.png");
  EXPECT_EQ(at(first, "arrows") + at(first, "opened"), "truenull");
  EXPECT_FALSE(requested("/track/seen")) << "the first message was counted when it was delivered";

  const auto opened = run({"show", "c", "--do", "right,right,left,open"}).json();
  EXPECT_EQ(at(opened, "position") + at(opened, "opened"), "1https://news.example/b");
  EXPECT_TRUE(requested("/track/seen?id=b"));
  EXPECT_TRUE(requested("/track/click?id=b"));
  EXPECT_EQ(run({"show", "c", "--do", "up"}).status, 2);
  const auto sent = requests().size();
  EXPECT_EQ(run({"show", "c", "--do", "right", "--png", "/nowhere/at/all.png"}).status, 1);
  EXPECT_EQ(requests().size(), sent) << "nothing may happen for a picture that can't be written";
  EXPECT_EQ(run({"show", "nobody"}).status, 1);
}

TEST_F(ScreenRoadTest, ShowFailsWhereAPhoneWouldNotDoWhatWasAskedFor) {
  startServer();
  allowNotifications();
  // One message has no arrows: what comes after the touch that is not there does not happen.
  const auto alone = payload("alone.json", R"({"aps":{"alert":{"title":"One"},"category":"news"},
      "isMultiple":false,"p":[{"t":"Title","o":{"body":"Body","image":"SERVER/images/a.png",
      "data":{"url":"https://news.example/","t":["SERVER/click"]}}}]})");
  ASSERT_EQ(run({"push", alone, "--id", "c"}).status, 0);
  const auto refused = run({"show", "c"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(at(refused.json(), "error"), HasSubstr("\"news\""));
  const auto untouched = run({"show", "c", "--anyway", "--do", "right,open"});
  EXPECT_EQ(untouched.status, 1);
  EXPECT_THAT(at(untouched.json(), "error"), HasSubstr("\"right\""));
  EXPECT_EQ(at(untouched.json(), "title") + at(untouched.json(), "opened"), "Titlenull");
  manifestExtra_ = R"("contentCategories": ["news", "vs_contentExt"], )";
  writeManifest("true");
  const auto opened = run({"show", "c", "--do", "open"}).json();
  EXPECT_EQ(at(opened, "opened"), "https://news.example/");
  EXPECT_THAT(at(opened, "requests"),
              EndsWith(R"({"method":"GET","url":")" + url_ + R"(/click","status":200}])"));
}

TEST_F(ScreenRoadTest, ShowSurvivesAnExtensionThatStops) {
  startServer();
  allowNotifications();
  ASSERT_EQ(run({"push", campaign(""), "--id", "c"}).status, 0);
  const auto shown = run({"show", "c"});
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(at(shown.json(), "error"), HasSubstr("The content extension stopped: Fatal error: "));
  EXPECT_THAT(shown.errors, HasSubstr("isMultiple"));
  EXPECT_EQ(at(shown.json(), "position"), "null");
}

TEST_F(ScreenRoadTest, LaunchAnswersThePublishersPage) {
  const auto document = payload("prompting.json", R"({"push_config":{"prompts":[{"prompt":"page"}]}})");
  startServer({"--document", document});
  const auto refused = run({"launch", "--answer", "allow", "--prompt", "cancel"});
  EXPECT_EQ(at(refused.json(), "authorisation"), "notDetermined");
  const auto agreed = run({"launch", "--answer", "allow", "--prompt", "ok"});
  EXPECT_EQ(at(agreed.json(), "authorisation"), "authorized") << agreed.errors;
  EXPECT_THAT(at(agreed.json(), "console"), HasSubstr("pns.ok"));
  EXPECT_THAT(requests(), testing::Contains("GET /v2/mobile.js")) << "as a page would";
  EXPECT_EQ(at(*run({"store"}).json().find("group"), "vs_visitedPCount"), "1") << "the page's screen";
  EXPECT_EQ(run({"launch", "--prompt", "maybe"}).status, 2);
}

TEST_F(ScreenRoadTest, APageThatCouldNotRunIsNotShownAndDoctorTellsWhy) {
  startServer({"--document", payload("odd.json", R"({"a": "say \"hi\"", "push_config": {"prompts": [
                                                   {"prompt": "page"}]}})")});
  const auto launched = run({"launch", "--answer", "allow", "--prompt", "ok"});
  EXPECT_EQ(at(launched.json(), "authorisation"), "notDetermined");
  EXPECT_THAT(at(launched.json(), "console"), HasSubstr("The permission page is not shown"));
  EXPECT_THAT(run({"doctor"}).output, HasSubstr("vs_autoconf"));
}

TEST_F(ScreenRoadTest, DemoWritesItselfDown) {
  openWindows();
  const auto report = folder_ / "report.html";
  const auto demo = run({"demo", "--report", report});
  EXPECT_EQ(demo.status, 0) << demo.output << demo.errors;
  std::stringstream page;
  page << std::ifstream(report).rdbuf();
  for (const char* text :
       {"Service extension", "GET /tag/k-123.json", "vs_autoconf", "taps the notification"}) {
    EXPECT_THAT(page.str(), HasSubstr(text));
  }
  std::size_t before = 0;
  for (const char* next : {"starts the application for the first time", "GET /tag/k-123.json", "vs_autoconf",
                           "is on the way when a push arrives", "/track/view?id=storm",
                           "taps the notification", "/track/click?id=storm"}) {
    const auto at = page.str().find(next, before);
    ASSERT_NE(at, std::string::npos) << next << " is not where it happened";
    before = at;
  }
  EXPECT_THAT(page.str(), Not(HasSubstr("src=\"http"))) << "the page must stand alone";
  EXPECT_EQ(run({"demo", "--report", "/nowhere/at/all.html"}).status, 1);
}

/// Only where the programs with windows are built.
TEST_F(ScreenRoadTest, ShowDrawsAPictureOnADisplayOfItsOwn) {
  if (!std::filesystem::exists(std::filesystem::path(BRELLIXCTL).parent_path() / "news_content_desktop")) {
    GTEST_SKIP() << "built without windows";
  }
  startServer();
  allowNotifications();
  ASSERT_EQ(run({"push", campaign(), "--id", "c"}).status, 0);
  openWindows();
  const auto picture = folder_ / "carousel.png";
  const auto shown = run({"show", "c", "--do", "right", "--png", picture});
  EXPECT_EQ(shown.status, 0) << shown.errors;
  EXPECT_EQ(at(shown.json(), "position"), "1");
  std::ifstream file(picture, std::ios::binary);
  std::string start(24, '\0');
  file.read(start.data(), 24);
  EXPECT_EQ(start.substr(1, 3), "PNG");
  EXPECT_EQ(static_cast<unsigned char>(start[18]) * 256 + static_cast<unsigned char>(start[19]), 390);
}

}  // namespace
}  // namespace VorselKelp::tool_tests
