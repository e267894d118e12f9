#pragma once

#include <gtk/gtk.h>

#include <functional>

#include "VorselKelp/platform/Device.h"

namespace VorselKelp::gtk {

/// Ticks with the frames of the window that is there when it is unpaused, for as long as that is there.
class FrameLink final : public platform::DisplayLink {
 public:
  FrameLink(std::function<GtkOverlay*()> place, std::function<void(double seconds)> tick)
      : place_(std::move(place)), tick_(std::move(tick)) {}
  FrameLink(const FrameLink&) = delete;
  FrameLink& operator=(const FrameLink&) = delete;
  ~FrameLink() override { stop(); }

  void setPaused(bool paused) override;

 private:
  static gboolean onFrame(GtkWidget*, GdkFrameClock* clock, gpointer self);
  void stop();

  const std::function<GtkOverlay*()> place_;
  const std::function<void(double)> tick_;
  GtkWidget* widget_ = nullptr;  ///< null while paused, and when it has gone
  guint callback_ = 0;
};

}  // namespace VorselKelp::gtk
