// The Reader in a real window, with real notification daemons, on the display and the session bus that the
// program runs on.

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <mutex>

#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpSystem/RemoteNotification.h"
#include "collection_server/CollectionServer.h"
#include "posix/support/TemporaryFolder.h"
#include "reader/ScreenReader.h"

namespace VorselKelp::testing_support {
namespace {

using platform::AuthorizationStatus;

class Program {
 public:
  explicit Program(const std::string& command) {
    int count = 0;
    char** arguments = nullptr;
    g_shell_parse_argv(command.c_str(), &count, &arguments, nullptr);
    g_spawn_async(nullptr, arguments, nullptr,
                  static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD), nullptr, nullptr,
                  &id_, nullptr);
    g_strfreev(arguments);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() { end(); }
  void end() {
    if (id_ == 0) return;
    ::kill(id_, SIGTERM);
    g_spawn_close_pid(id_);
    int status = 0;
    ::waitpid(std::exchange(id_, 0), &status, 0);
  }

 private:
  GPid id_ = 0;
};

/// What a command prints, without the line's end.
std::string output(const std::string& command) {
  char* text = nullptr;
  if (!g_spawn_command_line_sync(command.c_str(), &text, nullptr, nullptr, nullptr)) return "";
  std::string taken = text != nullptr ? text : "";
  g_free(text);
  while (taken.ends_with('\n')) taken.pop_back();
  return taken;
}

/// A desk, and the Reader on it.
class ReaderTest : public testing::Test {
 protected:
  ReaderTest() {
    collection_server::ServerOptions options;
    options.document = "{}";
    options.received = [this](const auto& request) {
      const std::lock_guard lock(mutex_);
      paths_.push_back(request.path);
    };
    server_ = *collection_server::CollectionServer::start(std::move(options));
    for (const auto& [variable, folder] : {std::pair("XDG_DATA_HOME", "/data"),
                                           {"XDG_CACHE_HOME", "/cache"},
                                           {"XDG_CONFIG_HOME", "/config"},
                                           {"HOME", ""}}) {
      ::setenv(variable, (folder_.path() + folder).c_str(), 1);
    }
    const auto file = folder_ / "com.example.reader.json";
    std::ofstream(file)
        << R"({"bundleIdentifier":"com.example.reader","name":"Reader","apiKey":"k-1",)"
        << R"("appGroupId":"group.com.example.reader","properties":{"VorselKellpTrackID":"feed-7"},)"
        << R"("endpoints":{)" << endpoints() << "}}";
    ::setenv("READER_DESCRIPTION", file.c_str(), 1);
    ::setenv("G_MESSAGES_DEBUG", "VorselKelp", 1);
    description_ = *system::loadDescription(file);
    store_ = std::make_unique<system::NotificationStore>(system::foldersOf(description_).notifications,
                                                         description_.bundleIdentifier, posix::makeClock());
    store_->setAuthorization(AuthorizationStatus::authorized);
  }

  std::string endpoints() const {
    std::string members;
    for (const char* name : {"collection", "tag", "events", "adFeed", "script"})
      members += (members.empty() ? "" : ",") + std::string("\"") + name + "\":\"" + server_->url() + "\"";
    return members;
  }
  void startReader() {
    reader_ = std::make_unique<Program>("sh -c 'exec " READER " > " + folder_ / "lines'");
    waitFor([&] { return requested("/v2/activity"); });
  }
  /// Lets the main loop work until `done` answers true, asked ten times a second.
  static bool waitFor(const std::function<bool()>& done) {
    const auto end = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
    const auto timer = g_timeout_add(
        100, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool reached = done();
    while (!reached && g_get_monotonic_time() < end) {
      g_main_context_iteration(nullptr, TRUE);
      reached = done();
    }
    g_source_remove(timer);
    EXPECT_TRUE(reached) << "what was waited for did not happen";
    return reached;
  }
  bool requested(std::string_view part) {
    const std::lock_guard lock(mutex_);
    return std::ranges::any_of(paths_, [&](const auto& path) { return path.find(part) != path.npos; });
  }
  bool printed(std::string_view text) {
    std::ifstream file(folder_ / "lines");
    return std::string(std::istreambuf_iterator(file), {}).find(text) != std::string::npos;
  }
  static std::string window(const std::string& title) {
    return output("xdotool search --onlyvisible --name '" + title + "'");
  }
  static void activate(const std::string& action, const std::string& parameter) {
    output(
        "gdbus call --session --dest com.example.reader --object-path /com/example/reader --method "
        "org.gtk.Actions.Activate " +
        action + " '" + parameter + "' '{}'");
  }
  platform::NotificationRequest request(const std::string& identifier, const std::string& payload) {
    platform::NotificationRequest made;
    made.identifier = identifier;
    made.content = system::unchangedContent(*JSONAny::decode(payload));
    made.content.userInfo = platform::UserInfo::fromJSON(payload);
    return made;
  }

  const TemporaryFolder folder_;
  std::mutex mutex_;
  std::vector<std::string> paths_;
  std::unique_ptr<collection_server::CollectionServer> server_;
  system::Description description_;
  std::unique_ptr<system::NotificationStore> store_;
  std::unique_ptr<Program> reader_;
};

/// A daemon, and where and how a pop-up in the upper right corner of the display is opened there.
struct Daemon {
  const char* name;
  const char* command;
  const char* tap;
};

class ReaderDaemonTest : public ReaderTest, public testing::WithParamInterface<Daemon> {};

TEST_P(ReaderDaemonTest, ShowsWhatIsDueAndItsTapOpensTheArticle) {
  const Program daemon(GetParam().command);
  // A push that lies in wait, as the Reader's own service extension has fitted it out.
  const auto queue = freedesktop::makeMainQueue();
  system::ServiceProgram service;
  service.program = READER_SERVICE;
  service.arguments = {::getenv("READER_DESCRIPTION")};
  const auto delivery = system::makeDelivery(std::move(service), queue);
  std::optional<Result<system::PushResult>> fitted;
  const auto url = server_->url();
  delivery->deliver(
      {"n-1",
       R"({"aps":{"mutable-content":1,"alert":{"title":"Storm","n":{"body":"Stay in","data":{"url":")" + url +
           R"(/articles/storm","t":[")" + url + R"(/track/click"]}}}}})",
       {}},
      {[&](Result<system::PushResult> result) { fitted = std::move(result); }, {}});
  ASSERT_TRUE(waitFor([&] { return fitted.has_value(); }));
  ASSERT_TRUE(fitted->ok());
  auto waiting = (*fitted)->request;
  EXPECT_EQ(waiting.content.body, "Stay in");
  waiting.trigger = platform::TimeIntervalTrigger{2, false};
  ASSERT_TRUE(store_->schedule(waiting));
  startReader();
  ASSERT_TRUE(waitFor([&] { return !store_->delivered().empty(); }));
  EXPECT_GE(store_->clock()->now(), store_->delivered().front().due) << "not before its time";

  ASSERT_TRUE(waitFor([&] {
    output(std::string("xdotool ") + GetParam().tap);
    return !window("/articles/storm").empty();
  }));
  EXPECT_TRUE(waitFor([&] { return requested("/track/click"); }));
  EXPECT_TRUE(waitFor([&] { return store_->delivered().empty(); })) << "what was opened is gone";
}

INSTANTIATE_TEST_SUITE_P(Daemons, ReaderDaemonTest,
                         testing::Values(Daemon{"xfce4", XFCE_NOTIFYD,
                                                "mousemove 728 92 click 1"},  // its button
                                         Daemon{"dunst", "dunst", "mousemove 630 78 click 2"}),
                         [](const auto& daemon) { return std::string(daemon.param.name); });

TEST_F(ReaderTest, ShowsTheLibrarysScreensOverItsOwnWindow) {
  ::setenv("GTK_A11Y", "atspi", 1);
  const ScreenReader screenReader;
  store_->setAuthorization(AuthorizationStatus::notDetermined);
  startReader();
  ASSERT_TRUE(waitFor([&] { return std::ranges::count(screenReader.everything(), "button Allow") == 1; }));
  output("xdotool mousemove 240 300");
  ASSERT_TRUE(waitFor([&] {
    output("xdotool key Tab Return");  // "Don't Allow" has the keyboard first
    return store_->authorization() != AuthorizationStatus::notDetermined;
  }));
  EXPECT_EQ(store_->authorization(), AuthorizationStatus::authorized);
  EXPECT_TRUE(waitFor([&] { return store_->pending().size() == 1; })) << "the reminder";

  activate("interstitial", "[]");
  ASSERT_TRUE(waitFor([&] { return requested("/v1/display/feed-7"); }));
  EXPECT_THAT(screenReader.everything(), testing::Contains("button Close"));
  EXPECT_FALSE(printed("CLOSE INTERSTITIAL AD"));
  ASSERT_TRUE(waitFor([&] {
    output("xdotool key Escape");
    return printed("CLOSE INTERSTITIAL AD");
  }));

  const auto url = server_->url();
  const auto page = [&](const std::string& k) {
    return R"({"t":"Story )" + k + R"(","i":[")" + url + "/track/seen" + k + R"("],"o":{"image":")" + url +
           R"(/images/storm.png","data":{"url":")" + url + "/articles/" + k + R"(","t":[")" + url +
           R"(/track/click"]}}})";
  };
  const auto payload =
      R"({"p":[)" + page("0") + "," + page("1") + "," + page("2") + R"(],"isMultiple":true})";
  ASSERT_TRUE(store_->deliver(request("c-1", payload)));
  activate("carousel", R"([<"c-1">])");
  ASSERT_TRUE(waitFor([&] { return !window("^Stories$").empty(); }));
  EXPECT_THAT(screenReader.everything(),
              testing::IsSupersetOf({"button Next", "button Previous", "button Open"}));
  output("xdotool mousemove 160 200");
  ASSERT_TRUE(waitFor([&] { return requested("/images/storm.png"); }));
  output("xdotool key Tab Tab Return");
  ASSERT_TRUE(waitFor([&] { return requested("/track/seen1"); }));
  output("xdotool key space");
  ASSERT_TRUE(waitFor([&] { return requested("/track/seen2"); }));
  activate("carousel", R"([<"nobody">])");
  EXPECT_FALSE(requested("/track/click"));
}

}  // namespace
}  // namespace VorselKelp::testing_support
