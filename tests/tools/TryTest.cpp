// What `try` says of payloads that do as lint foretells, and of those that do not.

#include "brellixctl/try/Comparison.h"

#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

namespace fs = std::filesystem;

/// Two pages with these members beside the text.
std::string twoPages(const std::string& inFirst, const std::string& inSecond) {
  const auto page = [](const std::string& members) {
    return R"({"t": "t", "i": ["https://t.example/i"], "o": {"body": "b", )" + members + "}}";
  };
  return R"({"aps": {"alert": {"title": "T", "body": "B"}, "category": "vs_contentExt"}, "isMultiple": true,
             "p": [)" +
         page(inFirst) + "," + page(inSecond) + "]}";
}

class TryTest : public ToolTest {
 protected:
  /// Needs neither a device nor a server.
  Finished tryOut(const std::string& file, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{BRELLIXCTL, "try", file, "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    ToolRun process(arguments, folder_ / "errors");
    Finished finished;
    finished.output = process.readAll();
    finished.status = process.wait();
    finished.errors = errorText();
    return finished;
  }

  /// "PART: THING" of all lines that differ.
  static std::string differing(const JSONAny& json) {
    std::string names;
    const auto* parts = json.find("parts");
    if (parts == nullptr) return at(json, "error");
    for (const auto& part : *parts->as<JSONAny::List>()) {
      for (const auto& line : *part.find("lines")->as<JSONAny::List>())
        if (at(line, "ok") == "false") names += at(part, "title") + ": " + at(line, "what") + "; ";
    }
    return names;
  }
};

/// The payload that a document shows.
std::string shownIn(const std::string& document) {
  std::ostringstream text;
  text << std::ifstream(document).rdbuf();
  const auto all = text.str();
  const auto begin = all.find("```json\n") + 8;
  return all.substr(begin, all.find("```", begin) - begin);
}

TEST_F(TryTest, FindsThatExamplesDoAsForetold) {
  std::vector<std::string> files{payload("shown.json", shownIn(EXAMPLE_PAYLOADS "/../../docs/campaigns.md"))};
  for (const auto& entry : fs::directory_iterator(EXAMPLE_PAYLOADS)) files.push_back(entry.path());
  EXPECT_GE(files.size(), 8u);
  for (const auto& file : files) {
    const auto tried = tryOut(file);
    EXPECT_EQ(tried.status, 0) << file << tried.errors << differing(tried.json());
    EXPECT_GE(at(tried.json(), "compared").size(), 2u);
  }
}

/// Stops at their moments, arrows, pictures that never come, hosts of several kinds.
TEST_F(TryTest, FollowsOddPayloads) {
  std::ofstream(folder_ / "arrows.json")
      << R"({"bundleIdentifier": "com.example.news", "apiKey": "k", "appGroupId": "group.n", "groups":
             ["group.n", "group.com.example.news.content.vorselKellp"], "switches": {"push": true}})";
  const std::string image = R"("image": "https://img.example/a/../1.jpg")";
  const std::string whole = image + R"(, "data": {"url": "https://n.example", "t": ["https://t.example/c"]})";
  const std::string alert = R"({"aps": {"mutable-content": 1, "alert": {"title": "https://a.example/", )";
  const std::string payloads[] = {
      twoPages(whole, R"("el": 0)"),
      twoPages(whole, image),
      twoPages(whole + R"(, "ap": "https://img.example/l", "an": "http://img.example/l")", whole),
      twoPages(whole, R"("image": "no url", "data": {"url": "rel", "t": ["no url"]})"),
      alert + R"("t": ["HTTPS:\/\/T.example/1", "https://u:p@t.example/2", "no url"], "n": {"body": "b",
               "image": "https://img.example/\u00fc", "data": {"url": "news://x"}}}}})",
      alert + R"("adex": true, "e": "https://ads.example/feed?x=1"}}})",
  };
  for (const auto& text : payloads) {
    const auto tried = tryOut(payload("odd.json", text), {"--app", folder_ / "arrows.json"});
    EXPECT_EQ(tried.status, 0) << text << tried.errors << differing(tried.json());
  }
}

TEST_F(TryTest, FailsWhereAnApplicationDoesOtherwise) {
  std::ofstream(folder_ / "lame.json")
      << R"({"bundleIdentifier": "com.example.news", "apiKey": "k", "appGroupId": "group.n", "groups":
             ["group.n"], "switches": {"push": true}, "programs": {"service": "/bin/true"}})";
  const auto page = folder_ / "page.html";
  const auto tried =
      tryOut(EXAMPLE_PAYLOADS "/text.json", {"--app", folder_ / "lame.json", "--report", page});
  EXPECT_EQ(tried.status, 1);
  EXPECT_NE(at(tried.json(), "error").find("otherwise than lint foretold"), std::string::npos);
  for (const char* line : {"The notification: title", "The notification: requests", "The store: vs_category",
                           "A tap on the notification: opens"})
    EXPECT_NE(differing(tried.json()).find(line), std::string::npos) << line;
  std::ostringstream html;
  html << std::ifstream(page).rdbuf();
  EXPECT_NE(html.str().find("<tr class=\"differs\">"), std::string::npos);
  EXPECT_EQ(tryOut(payload("list.json", "[1]")).status, 1);
}

/// What is wrong in the lint that it is held against is told, line by line.
TEST(ComparisonTest, TellsEachDifference) {
  PayloadLint lint;
  lint.prepared = true;
  lint.requests = {"https://t.example/1", "https://t.example/2"};
  lint.stops = {{PayloadLint::Stop::When::pageTapped, 0, ""}};
  lint.stored = {{"vs_url", "i/a", "x"}};
  auto& pages = lint.carousel.emplace().pages;
  pages.resize(1);
  pages[0].title = "T";
  const auto request = [](const char* url) {
    return JSONAny(JSONAny::Dictionary{{"method", "GET"}, {"url", url}});
  };
  const brellixctl::Comparison comparison(lint, "http://127.0.0.1:1", [](std::string text) { return text; });
  const auto differing = [](const brellixctl::TrialPart& part) {
    std::string names;
    for (const auto& line : part.lines) names += line.ok ? "" : line.what + ";";
    return names;
  };
  brellixctl::PushOutcome pushed;
  pushed.extension = "answered";
  pushed.requests = {request("https://t.example/1"), request("http://127.0.0.1:1/own"),
                     request("https://t.example/2")};
  EXPECT_EQ(differing(comparison.delivery(pushed)), "");
  std::swap(pushed.requests[0], pushed.requests[2]);
  pushed.extension = "stopped";
  pushed.shown.content.body = "b";
  EXPECT_EQ(differing(comparison.delivery(pushed)), "extension;body;requests;");

  pushed.silent = true;
  EXPECT_EQ(differing(comparison.delivery(pushed)), "shows;requests;");
  lint.silent.emplace().beacons = Beacons{{{"door", "E2", {}, {}, {}}}};
  lint.requests.clear();
  pushed.requests.clear();
  const brellixctl::Comparison quiet(lint, "http://127.0.0.1:1", [](std::string text) { return text; });
  EXPECT_EQ(differing(quiet.delivery(pushed)), "beacons;");

  const auto after =
      JSONAny::decode(R"({"vs_url": {"i": {"a": "x", "b": "y"}}, "vs_badge": 1, "new": true})");
  EXPECT_EQ(differing(comparison.stored({}, *after)), "new;vs_url i/b;");
  EXPECT_EQ(differing(comparison.stored(*after, *after)), "vs_url i/a;");

  brellixctl::TapOutcome tapped;
  EXPECT_EQ(differing(comparison.tap({}, tapped)), "");
  tapped.deepLink = "news://x";
  EXPECT_EQ(differing(comparison.tap({}, tapped)), "opens;");

  brellixctl::ShowOutcome shown;
  shown.requests = {request("https://img.example/1")};
  EXPECT_EQ(differing(comparison.opening(shown, false)), "requests;");
  EXPECT_EQ(differing(comparison.page(0, shown, {})), "title;");
  EXPECT_EQ(differing(comparison.pageTap(0, shown, {"https://img.example/1"})), "extension;");
  shown.opened = "https://n.example";
  EXPECT_EQ(differing(comparison.pageTap(0, shown, {})), "extension;opens;requests;");
}

}  // namespace
}  // namespace VorselKelp::tool_tests
