#include "VorselKelpSystem/Delivery.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSystem/RemoteNotification.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::system {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr const char* changeable = R"({"aps": {"mutable-content": 1, "alert": {"title": "T", "body": "B"}}})";

TEST(RemoteNotification, TellsWhatIsShownAndWhatIsNot) {
  struct Case {
    RemoteKind kind;
    std::string payload;
    std::string shown;
  };
  for (const auto& [kind, payload, shown] : std::vector<Case>{
           {RemoteKind::asItCame, R"({"aps": {"alert": "A"}})", "|A"},
           {RemoteKind::asItCame, R"({"aps": {"alert": {"title": "A"}, "mutable-content": "1"}})", "A|"},
           {RemoteKind::changeable, R"({"aps": {"alert": "A", "mutable-content": 1.0}})", "|A"},
           {RemoteKind::changeable,
            R"({"aps": {"alert": {"n": {}}, "mutable-content": 1, "content-available": 1}})", "|"},
           {RemoteKind::asItCame, R"({"aps": {"alert": "A", "content-available": 1}})", "|A"},
           {RemoteKind::asItCame, R"({"aps": {"alert": {"bl": []}, "content-available": 0}})", "|"},
           {RemoteKind::silent, R"({"aps": {"content-available": 1}})", "|"},
           {RemoteKind::silent, R"({"aps": {"content-available": 1, "mutable-content": 1, "alert": null}})",
            "|"},
           {RemoteKind::silent,
            R"({"aps": {"alert": {"gl": [], "title": "", "n": null}, "content-available": 1}})", "|"},
           {RemoteKind::changeable,
            R"({"aps": {"mutable-content": 1}, "p": [{"t": "P", "o": {"body": "Q"}}, {}]})", "P|Q"},
           {RemoteKind::asItCame, R"({"aps": {"alert": "A"}, "p": [{"t": "P"}]})", "|A"},
           {RemoteKind::asItCame, R"({"aps": 3, "p": [7]})", "|"},
           {RemoteKind::asItCame, R"({"p": {}})", "|"},
       }) {
    const auto json = *JSONAny::decode(payload);
    EXPECT_EQ(remoteKind(json), kind) << payload;
    const auto content = unchangedContent(json);
    EXPECT_EQ(content.title + "|" + content.body, shown) << payload;
  }
}

class DeliveryTest : public testing::Test {
 protected:
  /// A shell script as the extension.
  std::shared_ptr<Delivery> make(const std::string& script, double timeLimit = 30) {
    ServiceProgram program;
    program.program = folder_ / "extension";
    program.arguments = {folder_.path()};
    program.timeLimit = timeLimit;
    program.outputLimit = 1 << 20;
    std::ofstream(program.program) << "#!/bin/sh\n" << script << '\n';
    fs::permissions(program.program, fs::perms::owner_all);
    return makeDelivery(std::move(program), loop_);
  }
  void deliver(Delivery& delivery, const std::string& identifier, const std::string& payload = changeable,
               const std::string& collapseKey = "") {
    ++delivered_;
    delivery.deliver({identifier, payload, collapseKey},
                     {[this, identifier](Result<PushResult> result) {
                        if (!result)
                          return results_.push_back(identifier + ": " + result.error().description);
                        const auto& content = result->request.content;
                        results_.push_back(identifier + ": " + content.title + "|" + content.body);
                        last_ = *std::move(result);
                      },
                      [this](ExtensionReport report) { reports_.push_back(std::move(report)); }});
  }
  bool runUntil(platform::FunctionRef<bool()> over) {
    return loop_->run(over, posix::EventLoop::Clock::now() + std::chrono::seconds(60));
  }
  Texts take() {
    EXPECT_TRUE(runUntil([&] { return reports_.size() == delivered_; }));
    return std::exchange(results_, {});
  }

  testing_support::TemporaryFolder folder_;
  const std::shared_ptr<posix::EventLoop> loop_ = std::make_shared<posix::EventLoop>();
  std::size_t delivered_ = 0;
  Texts results_;
  PushResult last_;
  std::vector<ExtensionReport> reports_;
};

TEST_F(DeliveryTest, ShowsWhatTheExtensionMadeOfIt) {
  const auto delivery = make(R"(cat > "$1/$3"
    echo '{"note": 1}'; echo rubbish
    echo '{"content": {"title": "C", "body": "D", "badge": 2, "userInfo": {"a": 1}}}'
    echo '{"content": {"title": "again", "body": ""}}'; echo complaint >&2; echo '{"ended": true}'; exit 3)");
  deliver(*delivery, "id");
  EXPECT_TRUE(results_.empty()) << "the main thread does not wait";
  EXPECT_EQ(take(), Texts{"id: C|D"});
  EXPECT_EQ(last_.kind, RemoteKind::changeable);
  EXPECT_EQ(last_.request.content.badge, 2);
  ASSERT_NE(last_.request.content.userInfo.dictionary(), nullptr);
  const auto& outcome = reports_[0].outcome;
  EXPECT_TRUE(outcome.ended);
  EXPECT_EQ(outcome.exitStatus, 3);
  EXPECT_EQ(outcome.errorLines, Texts{"complaint"});
  EXPECT_EQ(outcome.valuesOf("note").size(), 1u);
  std::ifstream input(folder_ / "id");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(input), {}), changeable);

  // Nothing of the extension's runs for these.
  fs::remove(folder_ / "id");
  deliver(*delivery, "id", R"({"aps": {"alert": "as it came"}})");
  deliver(*delivery, "id", R"({"aps": {"content-available": 1}, "mutable-content": 1})");
  deliver(*delivery, "id", "[]");
  EXPECT_EQ(take(), (Texts{"id: |as it came", "id: |", "id: The payload is no JSON object"}));
  EXPECT_EQ(last_.kind, RemoteKind::silent);
  EXPECT_EQ(*last_.request.content.userInfo.bytes(),
            R"({"aps": {"content-available": 1}, "mutable-content": 1})");
  EXPECT_FALSE(fs::exists(folder_ / "id"));
}

TEST_F(DeliveryTest, ShowsTheOriginalWhenTheExtensionFails) {
  for (const auto& [script, reason] : std::vector<std::pair<std::string, std::string>>{
           {"exit 1", ""},
           {"echo 'Fatal error: no message' >&2; kill -ABRT $$", "Fatal error: no message"},
           {R"(echo '{"content": {}}'; echo '{"content": 3}'; echo '{"content": {"title": 1, "body": ""}}')",
            ""},
           {"exec yes 123456789", "it wrote too much"},
           {R"(printf '{"content": {"title": "half)", ""}}) {
    const auto delivery = make(script);
    deliver(*delivery, "a");
    EXPECT_EQ(take(), Texts{"a: T|B"}) << script;
    EXPECT_EQ(reports_.back().outcome.stopReason.value_or(""), reason) << script;
    EXPECT_NE(last_.request.content.userInfo.bytes(), nullptr);
  }
  // Its time is over before it has begun; what it says until it is killed would still count.
  const auto late = make("exec >&- 2>&-; sleep 100", -5);
  deliver(*late, "late");
  EXPECT_EQ(take(), Texts{"late: T|B"});
  EXPECT_EQ(reports_.back().outcome.stopReason, "it did not end in its time");

  const auto missing = makeDelivery({folder_ / "nothing", {}, {}}, loop_);
  deliver(*missing, "missing");
  EXPECT_EQ(take(), Texts{"missing: T|B"});
  EXPECT_TRUE(reports_.back().notStarted);
  const auto none = makeDelivery({"", {}, {}}, loop_);
  deliver(*none, "none");
  EXPECT_EQ(take(), Texts{"none: T|B"});
}

TEST_F(DeliveryTest, RunsFourAtOnceAndThoseOfOneKeyInTurn) {
  // Each says that it is there, and waits for its sign.
  const auto delivery = make(R"(touch "$1/at-$3"; read_sign() { [ -e "$1/go-$3" ]; }
    until read_sign "$@"; do sleep 0.01; done; echo '{"content": {"title": "'$3'", "body": ""}}')");
  const auto there = [&] {
    std::string names;
    for (const auto& file : fs::directory_iterator(folder_.path())) {
      const auto name = file.path().filename().string();
      if (name.starts_with("at-")) names += name.substr(3);
    }
    std::sort(names.begin(), names.end());
    return names;
  };
  const auto reach = [&](const std::string& names) {
    // Files tell nobody that they have come.
    const auto never = [] { return false; };
    for (int i = 0; i < 6000 && there() != names; ++i)
      loop_->run(never, posix::EventLoop::Clock::now() + std::chrono::milliseconds(10));
    return there() == names;
  };
  const auto go = [&](const std::string& name) { std::ofstream(folder_ / ("go-" + name)) << ""; };
  deliver(*delivery, "a", changeable, "key");
  deliver(*delivery, "b", changeable, "key");
  for (const char* name : {"c", "d", "e", "f"}) deliver(*delivery, name);
  deliver(*delivery, "g", R"({"aps": {"alert": "x"}})", "key");
  deliver(*delivery, "h", R"({"aps": {"alert": "x"}})");
  ASSERT_TRUE(reach("acde"));
  EXPECT_EQ(results_, Texts{"h: |x"}) << "what needs no process waits for none";
  go("c");
  ASSERT_TRUE(reach("acdef"));
  go("a");
  ASSERT_TRUE(reach("abcdef"));
  for (const char* name : {"b", "d", "e", "f"}) go(name);
  const auto results = take();
  const auto place = [&](const std::string& text) { return std::find(results.begin(), results.end(), text); };
  EXPECT_LT(place("a: a|"), place("b: b|"));
  EXPECT_LT(place("b: b|"), place("g: |x"));
  EXPECT_NE(place("g: |x"), results.end());
}

TEST_F(DeliveryTest, EndsWithWhatRuns) {
  auto delivery = make("echo '{\"here\": 1}'; sleep 100");
  for (const char* name : {"a", "b", "c", "d", "e"}) deliver(*delivery, name);
  delivery = nullptr;
  loop_->run([] { return true; }, posix::EventLoop::Clock::now());
  EXPECT_TRUE(results_.empty());
}

}  // namespace
}  // namespace VorselKelp::system
