#include "gtk/support/ScreenTest.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "glib/Pointers.h"

namespace VorselKelp::gtk {

TestScreen::TestScreen() {
  if (gtk_init_check()) return;
  std::fputs("These tests need a display: run them with scripts/with-screen\n", stderr);
  std::abort();
}

void TestScreen::show(const std::shared_ptr<ui::View>& view) {
  auto controller = std::make_shared<ui::ViewController>();
  controller->setView(view);
  show(controller);
}

void TestScreen::open() {
  stage = nullptr;
  closeWindow();
  window = GTK_WINDOW(gtk_window_new());
  overlay_ = GTK_OVERLAY(gtk_overlay_new());
  gtk_window_set_default_size(window, static_cast<int>(width), static_cast<int>(height));
  gtk_window_set_decorated(window, FALSE);
  gtk_window_set_child(window, GTK_WIDGET(overlay_));
  gtk_window_set_focus_visible(window, FALSE);
}

void TestScreen::show(GtkWidget* widget) {
  open();
  gtk_overlay_set_child(overlay_, widget);
  stage = makeStage({[this] { return overlay_; }, {}, [](bool) {}});
  gtk_window_present(window);
  settle();
}

void TestScreen::show(const std::shared_ptr<ui::ViewController>& controller) {
  open();
  shown_ = controller;
  root_ = makeViewWidget(controller->view());
  gtk_overlay_set_child(overlay_, root_->widget());
  stage = makeStage(
      {[this] { return overlay_; }, controller, [this](bool appeared) { screens.push_back(appeared); }});
  gtk_window_present(window);
  settle();
}

void TestScreen::closeWindow() {
  if (window == nullptr) return;
  gtk_overlay_set_child(overlay_, nullptr);
  root_ = nullptr;
  overlay_ = nullptr;
  gtk_window_destroy(std::exchange(window, nullptr));
}

TestScreen::~TestScreen() {
  stage = nullptr;
  closeWindow();
}

void TestScreen::waitUntil(const std::function<bool()>& done) {
  bool late = false;
  const auto timer = g_timeout_add_seconds(
      20,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &late);
  while (!late && !done()) g_main_context_iteration(nullptr, TRUE);
  if (!late) g_source_remove(timer);
  ASSERT_FALSE(late) << "what was waited for did not happen";
}

void TestScreen::settle() {
  passFrames(3);
  waitUntil([&] {
    return gtk_widget_get_mapped(GTK_WIDGET(window)) && (!root_ || root_->painted()) && stage->painted();
  });
}

void TestScreen::passFrames(int count) {
  int frames = 0;
  auto* widget = GTK_WIDGET(window);
  const auto ticks = gtk_widget_add_tick_callback(
      widget,
      [](GtkWidget*, GdkFrameClock*, gpointer passed) -> gboolean {
        ++*static_cast<int*>(passed);
        return G_SOURCE_CONTINUE;
      },
      &frames, nullptr);
  waitUntil([&] { return frames >= count; });
  gtk_widget_remove_tick_callback(widget, ticks);
}

void TestScreen::press(const std::vector<std::string>& keys) {
  std::string command = "xdotool key";
  for (const auto& key : keys) command += " " + key;
  ASSERT_TRUE(g_spawn_command_line_sync(command.c_str(), nullptr, nullptr, nullptr, nullptr));
}

void TestScreen::click(double x, double y) {
  const auto command = "xdotool mousemove " + std::to_string(static_cast<int>(x)) + " " +
                       std::to_string(static_cast<int>(y)) + " click 1";
  ASSERT_TRUE(g_spawn_command_line_sync(command.c_str(), nullptr, nullptr, nullptr, nullptr));
}

void TestScreen::click(ui::View& view) {
  const auto place = boundsOf(view);
  ASSERT_GT(place.size.width, 0) << "the view is not on the screen";
  click(place.origin.x + place.size.width / 2, place.origin.y + place.size.height / 2);
}

std::string TestScreen::pixel(double x, double y) {
  const auto file = testing::TempDir() + "vorsel-screen-" + std::to_string(::getpid()) + ".png";
  flush();
  const auto written = writePicture(GTK_WIDGET(window), file);
  if (!written) return written.error().description;
  const freedesktop::ObjectPtr<GdkPixbuf> picture(gdk_pixbuf_new_from_file(file.c_str(), nullptr));
  std::filesystem::remove(file);
  const auto* bytes = gdk_pixbuf_read_pixels(picture.get()) +
                      static_cast<int>(y) * gdk_pixbuf_get_rowstride(picture.get()) +
                      static_cast<int>(x) * gdk_pixbuf_get_n_channels(picture.get());
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", bytes[0], bytes[1], bytes[2]);
  return text;
}

void TestScreen::flush() {
  if (root_) root_->flush();
  stage->flush();
}

ui::Rect TestScreen::boundsOf(ui::View& view) const {
  const auto place = root_->boundsOf(view);
  return place.size.width > 0 ? place : stage->boundsOf(view);
}

void TestScreen::expectPlaced(ui::View& view, ui::Rect place) const {
  constexpr double tolerance = 0.5;
  const auto actual = boundsOf(view);
  EXPECT_NEAR(actual.origin.x, place.origin.x, tolerance);
  EXPECT_NEAR(actual.origin.y, place.origin.y, tolerance);
  EXPECT_NEAR(actual.size.width, place.size.width, tolerance);
  EXPECT_NEAR(actual.size.height, place.size.height, tolerance);
  EXPECT_EQ(view.frame.get().size, actual.size) << "the view does not know its own size";
}

}  // namespace VorselKelp::gtk
