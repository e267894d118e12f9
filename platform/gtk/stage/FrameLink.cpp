#include "stage/FrameLink.h"

#include <utility>

namespace VorselKelp::gtk {

void FrameLink::setPaused(bool paused) {
  if (paused) return stop();
  if (widget_ == nullptr && idle_ == 0) start();
}

void FrameLink::start() {
  widget_ = place_();
  if (widget_ == nullptr) return;
  g_object_add_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  callback_ = gtk_widget_add_tick_callback(widget_, &FrameLink::onFrame, this, nullptr);
  g_signal_connect(widget_, "unmap", G_CALLBACK(&FrameLink::onUnmap), this);
}

void FrameLink::stop() {
  if (idle_ != 0) g_source_remove(std::exchange(idle_, 0));
  if (widget_ == nullptr) return;
  g_signal_handlers_disconnect_by_data(widget_, this);
  gtk_widget_remove_tick_callback(widget_, std::exchange(callback_, 0));
  g_object_remove_weak_pointer(G_OBJECT(widget_), reinterpret_cast<gpointer*>(&widget_));
  widget_ = nullptr;
}

/// What plays in another window goes on there.
void FrameLink::onUnmap(GtkWidget*, FrameLink* self) {
  self->stop();
  self->idle_ = g_idle_add(
      [](gpointer link) -> gboolean {
        static_cast<FrameLink*>(link)->idle_ = 0;
        static_cast<FrameLink*>(link)->start();
        return G_SOURCE_REMOVE;
      },
      self);
}

gboolean FrameLink::onFrame(GtkWidget*, GdkFrameClock* clock, gpointer self) {
  const auto tick = static_cast<FrameLink*>(self)->tick_;  // the link may go while it ticks
  tick(static_cast<double>(gdk_frame_clock_get_frame_time(clock)) / G_USEC_PER_SEC);
  return G_SOURCE_CONTINUE;
}

}  // namespace VorselKelp::gtk
