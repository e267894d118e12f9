// An application without windows, with GLib's main loop alone; also in a sandbox, with the desktop's own
// portal.

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <fstream>

#include "reader/Desk.h"

namespace VorselKelp::testing_support {
namespace {

using testing::HasSubstr;
using testing::Not;

class WireTest : public Desk {
 protected:
  static constexpr const char* wire = "com.example.wire";

  WireTest() { wires_->setAuthorization(platform::AuthorizationStatus::authorized); }

  /// Waits until the wire has reported its start.
  std::unique_ptr<Program> startWire(const std::string& identifier, const std::string& lines,
                                     const std::string& before = "", const std::string& after = "") {
    const auto reports = requests("/v2/activity");
    auto program = start(before + WIRE " " + describe(identifier) + " " + after, lines);
    waitFor([&] { return requests("/v2/activity") > reports; });
    return program;
  }
  static std::string daemon(const std::string& method) {
    return output(
        "gdbus call --session --dest org.freedesktop.Notifications --object-path "
        "/org/freedesktop/Notifications --method " +
        method);
  }
  static bool shows(int count) {
    return daemon("org.freedesktop.DBus.Properties.Get org.dunstproject.cmd0 displayedLength") ==
           "(<uint32 " + std::to_string(count) + ">,)";
  }
  /// Puts a program's files and folders where they are, and a mark of the sandbox beside them.
  std::string sandbox() const {
    std::ofstream(folder_ / "info") << "[Application]\nname=" << wire << "\n[Instance]\ninstance-id=1\n";
    return "bwrap --die-with-parent --proc /proc --dev /dev --bind /tmp /tmp "
           "$(for each in /*; do case $each in /proc|/dev|/tmp) ;; *) echo --ro-bind-try $each $each ;; "
           "esac; done) --ro-bind " +
           folder_ / "info" + " /.flatpak-info ";
  }

  const std::unique_ptr<system::NotificationStore> wires_ = storeOf(wire);
};

TEST_F(WireTest, ShowsAndWithdrawsByThePortal) {
  const Program dunst("dunst");
  std::unique_ptr<Program> program = startWire(wire, "before");
  activate(wire, "remind");
  ASSERT_TRUE(waitFor([&] { return wires_->pending().size() == 1; }));
  auto reminder = wires_->pending().front().request;
  EXPECT_EQ(reminder.content.title, "The wire is waiting");
  program = nullptr;
  reminder.trigger = platform::TimeIntervalTrigger{1, false};
  ASSERT_TRUE(wires_->schedule(reminder));

  program = startWire(wire, "lines", sandbox());
  ASSERT_TRUE(waitFor([&] { return shows(1); }));
  activate(wire, "remind");
  ASSERT_TRUE(waitFor([&] { return shows(0); })) << "a reminder goes when it is scheduled anew";
  const auto history = daemon("org.dunstproject.cmd0.NotificationListHistory");
  EXPECT_THAT(history, HasSubstr("'summary': <'The wire is waiting'>, 'appname': <''>")) << "from the portal";

  auto push = fittedOut("n-1");
  wires_->changeCategories({}, store_->categories());  // with its button
  push.trigger = platform::TimeIntervalTrigger{1, false};
  ASSERT_TRUE(wires_->schedule(push));
  activate(wire, "remind");  // the wire looks again
  ASSERT_TRUE(waitFor([&] { return pixels(sun) > 500; }));
  ASSERT_TRUE(waitFor([&] {
    output("xdotool mousemove 630 78 click 2");
    return written("lines").find("opened " + server_->url() + "/articles/storm") != std::string::npos;
  }));
  EXPECT_TRUE(waitFor([&] { return requests("/track/click") == 1; }));
}

TEST_F(WireTest, WritesNoSecret) {
  constexpr std::string_view secrets[] = {"dGhpcyBpcyBhbiBlbmRwb2ludA", "tBHItJI5svbpez7K",
                                          "BNcRdreALRFXTFOO"};
  const auto subscription = R"({"endpoint":"https://push.example/)" + std::string(secrets[0]) +
                            R"(","keys":{"auth":")" + std::string(secrets[1]) + R"(","p256dh":")" +
                            std::string(secrets[2]) + R"("}})";
  std::string token;
  for (const char c : subscription) token += "0123456789abcdef"[c >> 4], token += "0123456789abcdef"[c & 15];
  ::setenv("G_MESSAGES_DEBUG", "all", 1);
  serve("{}", {{"/v2/users", 500}});  // failures are told too
  for (const auto& log : {std::string(), folder_ / "log"}) {
    const auto program = startWire(wire, "lines", "", log);
    const auto reports = requests(token);
    activate(wire, "register", "[<'" + subscription + "'>]");
    std::string lines;
    waitFor([&] {
      lines = written("lines") + (log.empty() ? "" : written("log"));
      return lines.find("HTTP 500") != lines.npos;
    });
    EXPECT_GT(requests(token), reports);
    EXPECT_THAT(lines, HasSubstr(token.substr(0, 8)));
    for (const auto secret : secrets) EXPECT_THAT(lines, Not(HasSubstr(std::string(secret.substr(0, 6)))));
    EXPECT_THAT(lines, Not(HasSubstr(token.substr(0, 9))));
  }
}

TEST_F(WireTest, GoesOnBesideAnotherOfItsGroupAndWithoutTheirStore) {
  const auto other = storeOf("com.example.other");
  auto first = startWire(wire, "first");
  auto second = startWire("com.example.other", "second");
  activate(wire, "remind");
  activate("com.example.other", "remind");
  EXPECT_TRUE(waitFor([&] { return wires_->pending().size() == 1 && other->pending().size() == 1; }));

  sqlite3* store = nullptr;
  const auto file =
      folder_ /
      "data/vorselkelp/groups/group.com.example.reader/Library/Preferences/group.com.example.reader.sqlite";
  ASSERT_EQ(::sqlite3_open(file.c_str(), &store), SQLITE_OK);
  ASSERT_EQ(::sqlite3_exec(store, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  first = nullptr;
  first = startWire(wire, "third");
  EXPECT_TRUE(first->running() && second->running());
  EXPECT_THAT(written("third"), HasSubstr(file + ": database is locked; what can't be written is dropped"));
  EXPECT_THAT(written("first") + written("second"), Not(HasSubstr(file)));
  ::sqlite3_close(store);
}

}  // namespace
}  // namespace VorselKelp::testing_support
