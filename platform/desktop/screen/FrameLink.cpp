#include "screen/FrameLink.h"

namespace VorselKelp::desktop {
namespace {

class FrameLink final : public platform::DisplayLink {
 public:
  FrameLink(std::weak_ptr<DesktopWindow> window, std::function<void(double)> tick)
      : window_(std::move(window)), tick_(std::move(tick)) {}
  ~FrameLink() override { setPaused(true); }

  void setPaused(bool paused) override {
    const auto window = window_.lock();
    if (!window || paused == (callback_ == 0)) return;
    auto* widget = GTK_WIDGET(window->window());
    if (paused) {
      gtk_widget_remove_tick_callback(widget, std::exchange(callback_, 0));
    } else {
      callback_ = gtk_widget_add_tick_callback(widget, &FrameLink::onFrame, this, nullptr);
    }
  }

 private:
  static gboolean onFrame(GtkWidget*, GdkFrameClock* clock, gpointer self) {
    const auto tick = static_cast<FrameLink*>(self)->tick_;  // the link may go while it ticks
    tick(static_cast<double>(gdk_frame_clock_get_frame_time(clock)) / G_USEC_PER_SEC);
    return G_SOURCE_CONTINUE;
  }

  const std::weak_ptr<DesktopWindow> window_;
  const std::function<void(double)> tick_;
  guint callback_ = 0;
};

}  // namespace

std::unique_ptr<platform::DisplayLink> DesktopDisplay::makeDisplayLink(std::function<void(double)> tick) {
  return std::make_unique<FrameLink>(window_, std::move(tick));
}

}  // namespace VorselKelp::desktop
