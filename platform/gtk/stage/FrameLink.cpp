#include "stage/FrameLink.h"

#include <utility>

namespace VorselKelp::gtk {

void FrameLink::setPaused(bool paused) {
  if (paused) return stop();
  if (widget_ != nullptr) return;
  auto* overlay = place_();
  if (overlay == nullptr) return;
  widget_ = GTK_WIDGET(overlay);
  g_object_add_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  callback_ = gtk_widget_add_tick_callback(widget_, &FrameLink::onFrame, this, nullptr);
}

void FrameLink::stop() {
  if (widget_ == nullptr) return;
  gtk_widget_remove_tick_callback(widget_, std::exchange(callback_, 0));
  g_object_remove_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  widget_ = nullptr;
}

gboolean FrameLink::onFrame(GtkWidget*, GdkFrameClock* clock, gpointer self) {
  const auto tick = static_cast<FrameLink*>(self)->tick_;  // the link may go while it ticks
  tick(static_cast<double>(gdk_frame_clock_get_frame_time(clock)) / G_USEC_PER_SEC);
  return G_SOURCE_CONTINUE;
}

}  // namespace VorselKelp::gtk
