// What the command line makes of extensions that fail and of input that is wrong.

#include <arpa/inet.h>
#include <sqlite3.h>
#include <sys/socket.h>

#include <chrono>
#include <filesystem>

#include "tools/ToolFixture.h"

namespace VorselKelp::tool_tests {
namespace {

namespace fs = std::filesystem;

constexpr const char* threeStories = R"({"aps": {"mutable-content": 1, "alert": "Three stories", "badge": 2},
                                         "p": [{"o": {"body": "one"}}]})";
constexpr const char* adWithoutEndpoint =
    R"({"aps": {"mutable-content": 1, "alert": {"title": "Sponsored", "adex": true}}})";

/// One line for a person, and the same for a script.
void expectRefused(const Finished& run, int status) {
  EXPECT_EQ(run.status, status) << run.errors;
  EXPECT_EQ("brellixctl: " + at(run.json(), "error") + '\n', run.errors);
}

TEST_F(ToolTest, ShowsTheOriginalWhenTheExtensionStops) {
  const auto pushed = [&] {
    writeManifest("true");
    allowNotifications();
    return run({"push", payload("campaign.json", threeStories), "--id", "c"});
  }();
  EXPECT_EQ(pushed.status, 1);
  EXPECT_EQ(at(pushed.json(), "extension"), "stopped");
  EXPECT_NE(at(pushed.json(), "error").find("Fatal error: "), std::string::npos);
  EXPECT_EQ(at(pushed.json(), "body"), "Three stories");
  EXPECT_EQ(at(pushed.json(), "badge"), "2");
  EXPECT_NE(pushed.errors.find("Fatal error: "), std::string::npos);
  EXPECT_EQ(std::count(pushed.errors.begin(), pushed.errors.end(), '\n'), 1);
}

TEST_F(ToolTest, EndsAnExtensionAtItsTimeLimit) {
  startServer();
  const auto file = payload("ad.json", adWithoutEndpoint);
  allowNotifications();
  // Without the push switch the last word is silence as well.
  EXPECT_EQ(at(run({"push", file, "--time-limit", "0.2"}).json(), "extension"), "silent");
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  const auto shown = run({"push", file, "--time-limit", "0.2"}).json();
  EXPECT_EQ(at(shown, "extension"), "timeLimit");
  EXPECT_EQ(at(shown, "title"), "Sponsored");
}

TEST_F(ToolTest, ClosesItsStoresAlthoughARequestIsUnderWay) {
  startServer();
  ASSERT_EQ(run({"launch", "--answer", "allow"}).status, 0);
  // Whoever connects is never answered.
  const int stalled = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(::bind(stalled, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(::listen(stalled, 8), 0);
  ::getsockname(stalled, reinterpret_cast<sockaddr*>(&address), &size);
  const auto file = payload(
      "image.json", R"({"aps": {"mutable-content": 1, "alert": {"title": "T", "n": {"body": "b", "image":
                       "http://127.0.0.1:)" +
                        std::to_string(ntohs(address.sin_port)) + R"(/x.png"}}}})");
  // What a killed process left long ago goes; what may still be needed stays.
  const fs::path temporary = folder_ / "device/applications/com.example.news.service/tmp";
  for (const char* name : {"vorsel-attachment-old", "vorsel-attachment-new"}) {
    fs::create_directories(temporary / name);
    std::ofstream(temporary / name / "x.png") << "x";
  }
  fs::last_write_time(temporary / "vorsel-attachment-old",
                      fs::file_time_type::clock::now() - std::chrono::hours(2));
  EXPECT_EQ(at(run({"push", file, "--time-limit", "1"}).json(), "extension"), "timeLimit");
  ::close(stalled);
  EXPECT_FALSE(fs::exists(temporary / "vorsel-attachment-old"));
  EXPECT_TRUE(fs::exists(temporary / "vorsel-attachment-new"));
}

TEST_F(ToolTest, SaysThatTheDeviceStoredNothing) {
  writeManifest("true");
  allowNotifications();
  const auto file = payload("plain.json", R"({"aps": {"alert": "x"}})");
  ASSERT_EQ(run({"push", file}).status, 0);
  sqlite3* opened = nullptr;
  ASSERT_EQ(sqlite3_open((folder_ / "device/notifications.sqlite").c_str(), &opened), SQLITE_OK);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, &sqlite3_close);
  ASSERT_EQ(sqlite3_exec(opened, "DROP TABLE notification", nullptr, nullptr, nullptr), SQLITE_OK);
  expectRefused(run({"push", file}), 1);
}

TEST_F(ToolTest, BearsAnApplicationThatIsMissingOrLeavesAProcessBehind) {
  writeManifest("true");
  tool_ = folder_ / "brellixctl";
  fs::copy_file(BRELLIXCTL, tool_);
  EXPECT_EQ(run({"launch"}).status, 1);
  std::ofstream(folder_ / "news_app")
      << "#!/bin/sh\nsleep 30 &\necho '{\"ended\": {\"initialised\": true}}' >&3\n";
  fs::permissions(folder_ / "news_app", fs::perms::owner_all);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(at(run({"launch", "--time-limit", "60"}).json(), "initialised"), "true");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(ToolTest, ShowsNoTerminalCommandsOfAPayload) {
  writeManifest("true");
  allowNotifications();
  const auto file = payload("sly.json", R"({"aps": {"alert": {"title": "a\u0000b\u001b[2J\u009bc\nd",
                                            "subtitle": "S", "body": "last"}}})");
  const auto json = run({"push", file, "--id", "sly"}).json();
  EXPECT_EQ(at(json, "subtitle"), "S");
  EXPECT_EQ(at(json, "title"), std::string("a\0b\x1b[2J\xc2\x9b"
                                           "c\nd",
                                           12));
  human_ = true;
  const auto shown = run({"push", file, "--id", "sly"}).output;
  EXPECT_NE(shown.find("a\\x00b\\x1B[2J\\xC2\\x9Bc\\x0Ad\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("last"), std::string::npos);
  EXPECT_EQ(run({"notifications"}).output.find('\x1b'), std::string::npos);
  EXPECT_NE(run({"tap", "\x1b[2J"}).errors.find("\\x1B[2J"), std::string::npos);
}

TEST_F(ToolTest, WhatTheUserDoesNotAllowNeitherRunsNorShowsAnything) {
  startServer();
  const auto file =
      payload("p.json", R"({"aps": {"mutable-content": 1, "alert": {"title": "t", "v": "SERVER/view",
                                          "n": {"body": "b"}}}})");
  const auto refused = [&](const char* why) {
    const auto pushed = run({"push", file});
    expectRefused(pushed, 1);
    EXPECT_NE(pushed.errors.find(why), std::string::npos) << pushed.errors;
    EXPECT_EQ(at(run({"notifications"}).json(), "delivered"), "[]");
  };
  refused("not been asked");
  const auto before = requests().size();
  ASSERT_EQ(run({"launch", "--answer", "deny"}).status, 0);
  const auto asked = requests().size();
  EXPECT_GT(asked, before);
  refused("does not allow");
  simulator::SimulatedDevice device(simulator::DeviceHome(folder_ / "device"), "com.example.news");
  device.setAuthorization(platform::AuthorizationStatus::authorized);
  refused("no device token");
  EXPECT_EQ(requests().size(), asked) << "no tracker either";
}

TEST_F(ToolTest, DeliversAPlainNotificationAsItIs) {
  writeManifest("true");
  allowNotifications();
  const auto file =
      payload("plain.json", R"({"aps": {"alert": {"title": "T", "body": "B"}, "sound": "default"}})");
  const auto shown = run({"push", file}).json();
  EXPECT_EQ(at(shown, "extension"), "notRun");
  EXPECT_EQ(at(shown, "title"), "T");
  EXPECT_EQ(at(shown, "sound"), "default");
  EXPECT_EQ(at(shown, "category"), "null");
  EXPECT_EQ(at(shown, "badge"), "null");
  EXPECT_FALSE(at(shown, "id").empty());
}

TEST_F(ToolTest, DeliversAMegabyteOfTitle) {
  writeManifest("true");
  allowNotifications();
  const std::string title(1 << 20, 'x');
  const auto file = payload("big.json", R"({"aps": {"mutable-content": 1, "alert": {"title": ")" + title +
                                            R"(", "n": {"body": "b", "cl": 1}}}})");
  const auto shown = run({"push", file}).json();
  EXPECT_EQ(at(shown, "extension"), "answered");
  EXPECT_EQ(at(shown, "title").size(), title.size());
}

TEST_F(ToolTest, RefusesWhatCannotBeReadInOneLine) {
  writeManifest("true");
  allowNotifications();
  const std::string deep = R"({"aps": )" + std::string(10000, '[') + std::string(10000, ']') + "}";
  for (const std::string& text : {std::string("[1]"), std::string("{\"aps\""), std::string("\xff\xfe"), deep,
                                  std::string(), std::string("\0\0", 2)}) {
    expectRefused(run({"push", payload("bad.json", text)}), 1);
  }
  EXPECT_EQ(run({"push", folder_ / "missing.json"}).status, 1);
  const auto broken = payload("broken.json", "{\n  'aps': 1}");
  for (const std::vector<std::string>& reads :
       std::vector<std::vector<std::string>>{{"push", broken}, {"serve", "--document", broken}}) {
    expectRefused(run(reads), 1);
    EXPECT_NE(errorText().find("broken.json is no JSON: line 2, column 3: expected a key"), std::string::npos)
        << errorText();
  }
  EXPECT_EQ(run({"tap", "unknown"}).status, 1);
  // The extension has a limit of its own.
  std::ofstream(folder_ / "huge.json") << "{";
  fs::resize_file(folder_ / "huge.json", (std::size_t{64} << 20) + 1);
  ToolRun extension({fs::path(BRELLIXCTL).replace_filename("news_service"), "--home", folder_ / "device",
                     "--app", folder_ / "news.json", "--payload", folder_ / "huge.json"},
                    folder_ / "errors");
  EXPECT_EQ(extension.wait(), 1);
  EXPECT_NE(errorText().find("larger than 64 MiB"), std::string::npos) << errorText();
  payload("news.json", "{}");
  EXPECT_EQ(run({"notifications"}).status, 1);
}

TEST_F(ToolTest, TellsWrongUsageFromFailure) {
  writeManifest("true");
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"fly"},
      {"push"},
      {"launch", "--answer", "perhaps"},
      {"launch", "--call", "noSuchOperation=[]"},
      {"launch", "--call", "setUserValue=[\"only one\"]"},
      {"launch", "--call", "isInitialised"},
      {"launch", "--call", "registerToken=[\"zz\"]"},
      {"launch", "--call", "registerToken=[\"abc\"]"},
      {"launch", "--call", "track=[3]"},
      {"launch", "--beacon", "enter:nowhere"},
      {"launch", "--time-limit", "nan"},
      {"push", "x.json", "--time-limit", "inf"},
      {"notifications", "--advance", "nan"},
      {"notifications", "--advance", "1e10"},
      {"serve", "--port", "99999"},
      {"serve", "--port", "0", "--status", "nonsense"},
  };
  for (const auto& arguments : wrong) {
    expectRefused(run(arguments), 2);
  }
}

TEST_F(ToolTest, ServerAnswersAsItIsTold) {
  startServer({"--status", "/v2/users=200"});
  const auto launched = run({"launch", "--answer", "allow"}).json();
  EXPECT_NE(at(launched, "delegate").find(R"({"name":"vorselInited","arguments":[false]})"),
            std::string::npos);
  EXPECT_EQ(at(*run({"store"}).json().find("group"), "vs_tok"), "-");
}

TEST_F(ToolTest, HasAResultForEveryCallWhenTimeRunsOut) {
  writeManifest("true");
  const auto launched =
      run({"launch", "--time-limit", "0", "--call", "isInitialised=[]", "--call", "isInitialised=[]"});
  EXPECT_EQ(launched.status, 1);
  EXPECT_EQ(at(launched.json(), "results"), "[null,null]");
  EXPECT_NE(at(launched.json(), "error"), "-");
  EXPECT_NE(launched.errors.find("time ended"), std::string::npos);
}

/// Numbers of delivered and pending notifications, and when the first pending one is due.
struct Held {
  std::size_t delivered, pending;
  double dueIn;
};

Held heldIn(const JSONAny& json) {
  const auto* pending = json.find("pending")->as<JSONAny::List>();
  const auto* due = pending->empty() ? nullptr : pending->front().find("dueIn")->as<double>();
  return {json.find("delivered")->as<JSONAny::List>()->size(), pending->size(), due != nullptr ? *due : -1};
}

TEST_F(ToolTest, BringsTheReminderAgainAndAgainAsTimeMovesOn) {
  startServer();
  manifestExtra_ = R"("schedule": 3600, )";
  writeManifest("true");
  ASSERT_EQ(run({"launch", "--answer", "allow", "--call", "updateScheduler=[]"}).status, 0);
  auto held = heldIn(run({"notifications"}).json());
  EXPECT_EQ(held.delivered, 0u);
  ASSERT_EQ(held.pending, 1u);
  EXPECT_NEAR(held.dueIn, 3600, 60);
  // Each time replaces the one before, and the next one is an interval after the one before it.
  for (const char* advance : {"5400", "3600", "36000"}) {
    held = heldIn(run({"notifications", "--advance", advance}).json());
    EXPECT_EQ(held.delivered, 1u);
    EXPECT_EQ(held.pending, 1u);
    EXPECT_NEAR(held.dueIn, 1800, 60);
  }
  // The library's clock moves along: the interval starts anew where the device is now.
  ASSERT_EQ(run({"launch", "--call", "updateScheduler=[]"}).status, 0);
  held = heldIn(run({"notifications", "--advance", "0"}).json());
  EXPECT_NEAR(held.dueIn, 3600, 60);
}

}  // namespace
}  // namespace VorselKelp::tool_tests
