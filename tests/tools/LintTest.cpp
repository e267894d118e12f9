// What `lint` foretells against what `push` then does, payload by payload.

#include <algorithm>
#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

namespace fs = std::filesystem;

using Requests = std::vector<std::string>;

constexpr const char* oddPayloads[] = {
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b", "actions": [
        {"action": "x", "title": "NO"}, {"action": "no", "title": "no"}, {"action": "y", "title": "Yes"}]}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b", "cl": 1,
        "image": "SERVER/images/bay.png", "actions": [{"action": "x", "title": "X"}]}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b", "cl": 0,
        "image": "not a url", "silent": false, "sound": "ping"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b", "silent": true,
        "sound": "ping"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "Caf\\u00e9 \\ud83d\\ude00", "n":
        {"body": "\\u00fcber"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "v": "SERVER/view?a=1&b=2",
        "t": ["", "ftp://x/y", "SERVER/one?x={a|b} \u00fc", "nonsense", "SERVER/two"], "n": {"body": "b"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "n": {"body": "b", "tag": "news"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "a", "body": "kept", "n": {}}}})",
    R"({"aps": {"mutable-content": 0, "sound": "bell", "alert": {"title": "as it came", "v": "SERVER/view",
        "n": {"body": "unseen", "sound": "ping"}}}})",
    R"({"aps": {"mutable-content": 1, "alert": {"title": "", "n": {}}}, "isMultiple": true, "p": [{"t": "unseen",
        "o": {"body": "the page's", "image": "SERVER/i", "data": {"url": "SERVER/u", "t": ["SERVER/t"]}}}]})",
};

class LintTest : public ToolTest {
 protected:
  /// Needs neither a device nor an application.
  Finished lint(const std::string& file, const std::string& identifier = "i") {
    ToolRun process({BRELLIXCTL, "lint", file, "--id", identifier, "--json"}, folder_ / "errors");
    Finished finished;
    finished.output = process.readAll();
    finished.status = process.wait();
    return finished;
  }

  /// Checks that delivering the payload shows, requests and stores what `lint` says; answers what that is.
  JSONAny compare(const std::string& text) {
    SCOPED_TRACE(text);
    const auto identifier = "n" + std::to_string(++count_);
    const auto file = payload(identifier + ".json", text);
    const auto told = lint(file, identifier);
    EXPECT_EQ(told.status, 0) << told.output;
    const auto json = told.json();
    EXPECT_EQ(at(json, "root"), "push");
    const auto before = requests().size();
    const auto shown = run({"push", file, "--id", identifier}).json();
    const auto* shows = json.find("shows");
    if (shows == nullptr) return ADD_FAILURE() << "not told", json;
    for (const char* key : {"title", "subtitle", "body", "sound", "category", "actions"})
      EXPECT_EQ(at(*shows, key), at(shown, key)) << key;
    EXPECT_EQ(foretold(json), sentSince(before));
    compareStore(json, identifier);
    return json;
  }

  /// The tap on the notification that was compared last.
  void compareTap(const JSONAny& told) {
    const auto& tap = told.find("taps")->as<JSONAny::List>()->front();
    const auto before = requests().size();
    const auto opened = run({"tap", "n" + std::to_string(count_)}).json();
    for (const char* kind : {"browser", "deepLink"})
      EXPECT_EQ(at(opened, kind), at(tap, "opens") == kind ? at(tap, "url") : "null");
    expectSent(tap, before);
  }

  /// Pages through the carousel that was compared last, and taps its last page.
  void compareCarousel(const JSONAny& told) {
    const auto* carousel = told.find("carousel");
    const auto* pages = carousel->find("pages") ? carousel->find("pages")->as<JSONAny::List>() : nullptr;
    if (pages == nullptr) return;
    std::string acts = "open";
    for (std::size_t i = 1; i < pages->size(); ++i) acts = "right," + acts;
    const auto before = requests().size();
    const auto shown = run({"show", "n" + std::to_string(count_), "--do", acts}).json();
    const auto* tap = pages->back().find("tap");
    EXPECT_EQ(at(shown, "title"), at(pages->back(), "title"));
    EXPECT_EQ(at(shown, "body"), at(pages->back(), "text"));
    EXPECT_EQ(at(shown, "image"), at(pages->back(), "image"));
    EXPECT_EQ(at(shown, "opened"), at(*tap, "url"));
    EXPECT_EQ(at(shown, "arrows"), at(*carousel, "arrows"));
    for (const auto& page : *pages) expectSent(page, before);
    expectSent(*carousel, before);
    expectSent(*tap, before);
    ++carousels_;
  }

  void expectSent(const JSONAny& told, std::size_t before) const {
    const auto sent = sentSince(before);
    for (const auto& url : foretold(told))
      EXPECT_TRUE(std::binary_search(sent.begin(), sent.end(), url)) << url;
  }

  void compareStore(const JSONAny& json, const std::string& identifier) {
    const auto store = run({"store"}).json();
    for (const auto& stored : *json.find("stored")->as<JSONAny::List>()) {
      const auto* value = store.find("group")->find(at(stored, "key"));
      ASSERT_NE(value, nullptr) << at(stored, "key");
      const auto held = value->encode();
      const auto told = JSONAny(at(stored, "text")).encode();
      ASSERT_TRUE(held.ok() && told.ok());
      EXPECT_NE(held->find(*told), std::string::npos) << *held << " of " << identifier;
    }
  }

  static Requests foretold(const JSONAny& json) {
    Requests urls;
    for (const auto& url : *json.find("requests")->as<JSONAny::List>())
      urls.push_back(*url.as<std::string>());
    std::sort(urls.begin(), urls.end());
    return urls;
  }

  [[nodiscard]] Requests sentSince(std::size_t before) const {
    Requests urls;
    for (const auto& record : requestRecords()) urls.push_back(url_ + at(record, "path"));
    urls.erase(urls.begin(), urls.begin() + static_cast<std::ptrdiff_t>(before));
    std::sort(urls.begin(), urls.end());
    return urls;
  }

  int carousels_ = 0;

 private:
  int count_ = 0;
};

std::string contentsOf(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  auto found = text.str();
  const std::string address = "http://127.0.0.1:8080";
  for (auto at = found.find(address); at != std::string::npos; at = found.find(address, at))
    found.replace(at, address.size(), "SERVER");
  return found;
}

TEST_F(LintTest, ForetellsWhatADeliveryDoes) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  for (const char* text : oddPayloads) compare(text);
  int examples = 0;
  for (const auto& entry : fs::directory_iterator(EXAMPLE_PAYLOADS)) {
    const auto name = entry.path().filename();
    if (name == "ad.json" || name == "campaign.json" || name == "plain.json") continue;
    const auto told = compare(contentsOf(entry.path()));
    compareTap(told);
    compareCarousel(told);
    ++examples;
  }
  EXPECT_EQ(carousels_, 1);
  EXPECT_GE(examples, 4);
}

TEST_F(LintTest, KnowsAdsCampaignsAndWhatIsNeither) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const fs::path examples = EXAMPLE_PAYLOADS;
  const auto ad = payload("ad.json", contentsOf(examples / "ad.json"));
  const auto before = requests().size();
  EXPECT_EQ(at(run({"push", ad}).json(), "extension"), "answered");
  EXPECT_EQ(at(*lint(ad).json().find("shows"), "ad"), "true");
  const auto sent = sentSince(before);
  for (const auto& url : foretold(lint(ad).json()))
    EXPECT_NE(std::find(sent.begin(), sent.end(), url), sent.end()) << url;

  const auto campaign = payload("campaign.json", contentsOf(examples / "campaign.json"));
  const auto told = lint(campaign);
  EXPECT_EQ(told.status, 1);
  EXPECT_EQ(at(told.json(), "root"), "campaign");
  EXPECT_NE(at(told.json(), "stops").find("mutable-content"), std::string::npos);
  EXPECT_EQ(at(run({"push", campaign}).json(), "extension"), "stopped");

  for (const char* text : {"{}", "[1]", "{\"aps\"", R"({"aps": {"mutable-content": "1", "alert": {}}})"}) {
    const auto wrong = lint(payload("wrong.json", text));
    EXPECT_EQ(wrong.status, 1) << text;
    EXPECT_EQ(at(wrong.json(), "root"), "null") << text;
    EXPECT_NE(at(wrong.json(), "errors"), "[]") << text;
    EXPECT_EQ(at(wrong.json(), "error"),
              *wrong.json().find("errors")->as<JSONAny::List>()->front().as<std::string>())
        << text;
  }
  EXPECT_EQ(lint(folder_ / "missing.json").status, 1);
  const auto warned =
      payload("warned.json", R"({"aps": {"mutable-content": 1, "alert": {"title": "", "n": {}}}})");
  EXPECT_EQ(lint(warned).status, 0);
  const auto strict = run({"lint", warned, "--strict"});
  EXPECT_EQ(strict.status, 1);
  EXPECT_NE(strict.errors.find("aps.alert.title: empty"), std::string::npos) << strict.errors;
}

TEST_F(LintTest, PrintsSchemas) {
  for (const char* name : {"push", "campaign", "activity", "users", "configuration", "ad"}) {
    const auto schema = run({"schema", name});
    EXPECT_EQ(schema.status, 0);
    EXPECT_NE(schema.json().as<JSONAny::Dictionary>(), nullptr) << schema.output;
  }
  const auto unknown = run({"schema", "pull"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.errors.find("configuration"), std::string::npos);
}

}  // namespace
}  // namespace VorselKelp::tool_tests
