#include "VorselKelpFreedesktop/Application.h"

#include <gio/gio.h>
#include <sqlite3.h>
#include <stdlib.h>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "freedesktop/NotificationServer.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::freedesktop {
namespace {

/// An application on a desktop, while another process keeps its notifications locked.
class ApplicationTest : public BusTest {
 protected:
  ApplicationTest() {
    ::setenv("XDG_DATA_HOME", (folder_ / "data").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (folder_ / "cache").c_str(), 1);
    description_ = *system::parseDescription(
        R"({"bundleIdentifier": "com.example.news", "apiKey": "k", "appGroupId": "group.news",
            "endpoints": {"collection": "http://127.0.0.1:9", "tag": "http://127.0.0.1:9",
                          "events": "http://127.0.0.1:9"}})");
    store_ = std::make_unique<system::NotificationStore>(system::foldersOf(description_).notifications,
                                                         "com.example.news", posix::makeClock());
    store_->setAuthorization(platform::AuthorizationStatus::authorized);
    sqlite3* opened = nullptr;
    sqlite3_open((system::foldersOf(description_).notifications + "/notifications.sqlite").c_str(), &opened);
    other_.reset(opened);
  }
  ~ApplicationTest() override {
    ::unsetenv("XDG_DATA_HOME");
    ::unsetenv("XDG_CACHE_HOME");
  }
  void execute(const char* sql) {
    ASSERT_EQ(sqlite3_exec(other_.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK);
  }

  testing_support::TemporaryFolder folder_;
  system::Description description_;
  std::unique_ptr<system::NotificationStore> store_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> other_{nullptr, &sqlite3_close};
};

TEST_F(ApplicationTest, StartsAndHearsTapsWithoutWaitingForItsStore) {
  NotificationServer desktop(address);
  platform::NotificationRequest request;
  request.identifier = "n";
  request.content.title = "Storm";
  ASSERT_TRUE(store_->schedule(request));
  request.identifier = "tapped";
  ASSERT_TRUE(store_->deliver(request));
  execute("BEGIN IMMEDIATE");
  const ObjectPtr<GApplication> application(g_application_new("com.example.news", G_APPLICATION_NON_UNIQUE));
  g_application_register(application.get(), nullptr, nullptr);
  ApplicationOptions options;
  options.busAddress = address;
  int raised = 0;
  options.raise = [&](const std::string&) { ++raised; };
  const auto started = startApplication(application.get(), description_, std::move(options));
  ASSERT_TRUE(started);
  std::optional<std::string> title;
  (*started)->notification("n",
                           [&](const auto& found) { title = found ? found->request.content.title : ""; });
  g_action_group_activate_action(G_ACTION_GROUP(application.get()), Application::responseAction,
                                 g_variant_new("(ss)", "tapped", ""));
  // Idle work comes after everything else that the main loop has to do.
  int rounds = 0;
  g_idle_add([](gpointer count) -> gboolean { return ++*static_cast<int*>(count) < 3; }, &rounds);
  waitUntil([&] { return rounds == 3; });
  EXPECT_TRUE(desktop.shown.empty());
  EXPECT_EQ(title, std::nullopt);
  EXPECT_EQ(raised, 0);

  execute("ROLLBACK");
  waitUntil([&] { return raised == 1 && title && !desktop.shown.empty(); });
  EXPECT_EQ(title, "Storm");
  EXPECT_EQ(desktop.shown[0].title, "Storm");
  (*started)->leave();
  ASSERT_EQ(store_->delivered().size(), 1U) << "what was tapped is gone";
  EXPECT_EQ(store_->delivered()[0].request.identifier, "n");
}

}  // namespace
}  // namespace VorselKelp::freedesktop
