#include "VorselKelpGtk/Attach.h"

#include <stdlib.h>

#include <fstream>

#include "VorselKelp/InterstitialAD.h"
#include "VorselKelpGtk/Carousel.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/ManualMainQueue.h"
#include "application/WindowWatch.h"
#include "gtk/support/ScreenTest.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::gtk {
namespace {

using platform::AuthorizationStatus;

/// An application with as many windows as its user wants; no server answers it.
class AttachTest : public testing::Test {
 protected:
  AttachTest() {
    ::setenv("XDG_DATA_HOME", folder_.path().c_str(), 1);
    ::setenv("XDG_CACHE_HOME", folder_.path().c_str(), 1);
    std::ofstream(file_)
        << R"({"bundleIdentifier":"com.example.windows","apiKey":"k-1",)"
        << R"("appGroupId":"group.com.example.windows","properties":{"VorselKellpTrackID":"feed-7"},"endpoints":{)"
        << R"("collection":"http://127.0.0.1:9","tag":"http://127.0.0.1:9","adFeed":"http://127.0.0.1:9"}})";
    const auto description = *system::loadDescription(file_);
    store_ = std::make_shared<system::NotificationStore>(system::foldersOf(description).notifications,
                                                         description.bundleIdentifier, posix::makeClock());
    push_ = attach(
        application_, file_,
        {.configure = [](VorselBuilder& builder) { builder.push(); }, .overlay = [this] { return front_; }});
    g_signal_connect(application_, "activate", G_CALLBACK(+[](GApplication* application, gpointer self) {
                       g_application_hold(application);
                       g_idle_add_once([](gpointer test) { static_cast<AttachTest*>(test)->work(); }, self);
                     }),
                     this);
  }
  ~AttachTest() override {
    push_ = nullptr;
    g_object_unref(application_);
  }

  void run(std::function<void()> steps) {
    steps_ = std::move(steps);
    EXPECT_EQ(g_application_run(G_APPLICATION(application_), 0, nullptr), 0);
  }
  /// Opens a window, in front of those that are there.
  GtkWindow* open(GtkWidget* content = nullptr) {
    auto* window = GTK_WINDOW(gtk_application_window_new(application_));
    gtk_window_set_default_size(window, 390, 312);
    gtk_window_set_decorated(window, FALSE);
    front_ = GTK_OVERLAY(gtk_overlay_new());
    if (content != nullptr) gtk_overlay_set_child(front_, content);
    gtk_window_set_child(window, GTK_WIDGET(front_));
    gtk_window_present(window);
    TestScreen::waitUntil([&] { return gtk_widget_get_mapped(GTK_WIDGET(window)) != FALSE; });
    return window;
  }

  const testing_support::TemporaryFolder folder_;
  const std::string file_ = folder_ / "description.json";
  GtkApplication* const application_ = gtk_application_new("com.example.windows", G_APPLICATION_NON_UNIQUE);
  GtkOverlay* front_ = nullptr;
  std::shared_ptr<system::NotificationStore> store_;
  std::shared_ptr<Attached> push_;

 private:
  void work() {
    steps_();
    g_application_quit(G_APPLICATION(application_));
  }
  std::function<void()> steps_;
};

/// Whether something lies over the window, ready to be clicked.
bool covered(GtkOverlay* overlay) {
  auto* top = gtk_widget_get_last_child(GTK_WIDGET(overlay));
  return top != gtk_overlay_get_child(overlay) && gtk_widget_get_width(top) > 0;
}

TEST_F(AttachTest, AQuestionGoesWithItsWindowAndCanBeAskedAgain) {
  run([this] {
    open();
    auto* first = front_;
    auto* second = open();
    auto* over = front_;
    push_->askForPermission();
    TestScreen::waitUntil([&] { return covered(over); });
    EXPECT_FALSE(covered(first));
    gtk_window_destroy(second);
    front_ = first;
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    push_->askForPermission();
    TestScreen::waitUntil([&] { return covered(first); });
    EXPECT_EQ(store_->authorization(), AuthorizationStatus::notDetermined);
    TestScreen::click(195 + 70, 156 + 55);
    TestScreen::waitUntil([&] { return store_->authorization() == AuthorizationStatus::authorized; });
  });
}

struct Hold final : system::BackgroundHold {
  void hold() override { held = true; }
  void release() override { held = false; }
  bool held = false;
};

TEST_F(AttachTest, WaitsWithoutWindowsForWhatIsUnderWayAndNotTooLong) {
  const auto clock = std::make_shared<testing_platform::ManualClock>();
  const auto queue = std::make_shared<testing_platform::ManualMainQueue>(clock);
  const auto hold = std::make_shared<Hold>();
  const auto running = system::makeRunningApplication({store_, nullptr, nullptr, nullptr, hold});
  bool idle = false;
  const auto heldFor = [&](double seconds) {
    for (double passed = 0; hold->held && passed < seconds; passed += 0.25) {
      clock->advance(0.25);
      queue->runUntilIdle();
    }
    return hold->held;
  };
  run([&] {
    const WindowWatch watch(application_, *running, queue, [&] { return idle; });
    auto* window = open();
    running->beginBackgroundTask("report", {});
    EXPECT_TRUE(heldFor(3600)) << "with a window there is no end";
    gtk_window_destroy(window);
    EXPECT_TRUE(heldFor(29));
    EXPECT_FALSE(heldFor(2));

    window = open();
    running->beginBackgroundTask("report", {});
    gtk_window_destroy(window);
    EXPECT_TRUE(heldFor(1));
    window = open();
    EXPECT_TRUE(heldFor(3600)) << "there is a window again";
    gtk_window_destroy(window);
    idle = true;
    EXPECT_FALSE(heldFor(1));
  });
}

TEST_F(AttachTest, EndsUnderWhateverIsOpen) {
  run([&] {
    platform::NotificationRequest request;
    request.identifier = "c-1";
    request.content.userInfo = platform::UserInfo::fromJSON(
        R"({"p":[{"t":"Story","o":{"image":"http://127.0.0.1:9/a.png","data":{"url":"http://127.0.0.1:9/a",)"
        R"("t":["http://127.0.0.1:9/t"]}}}],"isMultiple":true})");
    ASSERT_TRUE(store_->deliver(request));
    auto* first = open();
    std::optional<platform::DeliveredNotification> kept;
    push_->notification("c-1", [&](auto found) { kept = std::move(found); });
    TestScreen::waitUntil([&] { return kept.has_value(); });
    const auto shown = carousel(*kept, [](const std::string&) {});
    ASSERT_TRUE(shown);
    open(*shown);
    const auto ad = InterstitialAD::create("front");
    push_->present(ad->interstitialController());
    push_->askForPermission();
    TestScreen::waitUntil([&] { return covered(front_); });
    gtk_window_destroy(first);
  });
  EXPECT_EQ(store_->authorization(), AuthorizationStatus::notDetermined);
}

}  // namespace
}  // namespace VorselKelp::gtk
