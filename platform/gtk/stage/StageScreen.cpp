#include "stage/StageScreen.h"

#include <utility>

#include "VorselKelpGtk/Stage.h"
#include "glib/Pointers.h"
#include "stage/FrameLink.h"

namespace VorselKelp::gtk {
namespace {

/// In a window that is painted: the one on top, else any of the application's.
GtkWidget* paintedWidget(const OverlayStage& stage) {
  auto* top = reinterpret_cast<GtkWidget*>(stage.topOverlay());
  if (top != nullptr && gtk_widget_get_mapped(top)) return top;
  auto* windows = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(windows); ++i) {
    const freedesktop::ObjectPtr<GtkWidget> window(GTK_WIDGET(g_list_model_get_item(windows, i)));
    if (gtk_widget_get_mapped(window.get())) return window.get();
  }
  return top;  // which may be painted soon
}

}  // namespace

StageScreen::StageScreen(std::weak_ptr<OverlayStage> stage) : stage_(std::move(stage)) {
  auto* monitors = gdk_display_get_monitors(gdk_display_get_default());
  if (g_list_model_get_n_items(monitors) > 0) {
    const freedesktop::ObjectPtr<GdkMonitor> first(GDK_MONITOR(g_list_model_get_item(monitors, 0)));
    GdkRectangle area;
    gdk_monitor_get_geometry(first.get(), &area);
    width_ = area.width;
    height_ = area.height;
  }
}

void StageScreen::look() {
  if (!g_main_context_is_owner(g_main_context_default())) return;
  const auto stage = stage_.lock();
  auto* overlay = stage ? stage->topOverlay() : nullptr;
  if (overlay == nullptr || gtk_widget_get_width(GTK_WIDGET(overlay)) == 0) return;
  width_ = gtk_widget_get_width(GTK_WIDGET(overlay));
  height_ = gtk_widget_get_height(GTK_WIDGET(overlay));
}

double StageScreen::width() {
  look();
  return width_;
}

double StageScreen::height() {
  look();
  return height_;
}

std::unique_ptr<platform::DisplayLink> StageScreen::makeDisplayLink(std::function<void(double)> tick) {
  return std::make_unique<FrameLink>(
      [weak = stage_] {
        const auto stage = weak.lock();
        return stage ? paintedWidget(*stage) : nullptr;
      },
      std::move(tick));
}

}  // namespace VorselKelp::gtk
