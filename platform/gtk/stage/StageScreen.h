#pragma once

#include <atomic>
#include <memory>

#include "VorselKelp/platform/Device.h"
#include "stage/OverlayStage.h"

namespace VorselKelp::gtk {

/// The screen that the core lays out for: the overlay of the window on top; while there is none, what it was
/// before. Looked at whenever the main thread asks; other threads hear what that saw last.
class StageScreen final : public platform::Screen {
 public:
  explicit StageScreen(std::weak_ptr<OverlayStage> stage);
  double width() override;
  double height() override;
  std::unique_ptr<platform::DisplayLink> makeDisplayLink(std::function<void(double seconds)> tick) override;

 private:
  void look();

  const std::weak_ptr<OverlayStage> stage_;
  std::atomic<double> width_ = 0;
  std::atomic<double> height_ = 0;
};

}  // namespace VorselKelp::gtk
