#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "VorselKelp/platform/Device.h"

namespace VorselKelp::gtk {

/// Ticks with the frames of a window: the one that is there when it is unpaused, and once that has gone
/// another one that is there then.
class FrameLink final : public platform::DisplayLink {
 public:
  /// `place` answers a widget in a window, or null while there is none.
  FrameLink(std::function<GtkWidget*()> place, std::function<void(double seconds)> tick)
      : place_(std::move(place)), tick_(std::move(tick)) {}
  FrameLink(const FrameLink&) = delete;
  FrameLink& operator=(const FrameLink&) = delete;
  ~FrameLink() override { stop(); }

  void setPaused(bool paused) override;

 private:
  static gboolean onFrame(GtkWidget*, GdkFrameClock* clock, gpointer self);
  static void onUnmap(GtkWidget*, FrameLink* self);
  void start();
  void stop();

  const std::function<GtkWidget*()> place_;
  const std::function<void(double)> tick_;
  GtkWidget* widget_ = nullptr;  ///< null while paused, and when it has gone
  guint callback_ = 0;
  guint idle_ = 0;  ///< set while it looks for another window
};

}  // namespace VorselKelp::gtk
