#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "VorselKelp/platform/Device.h"
#include "VorselKelpSimulator/Manifest.h"
#include "screen/DesktopWindow.h"

namespace VorselKelp::desktop {

/// The screen of the simulated device, refreshed as the window is.
class DesktopDisplay final : public platform::Screen {
 public:
  DesktopDisplay(const simulator::Manifest& manifest, std::weak_ptr<DesktopWindow> window)
      : width_(manifest.screenWidth), height_(manifest.screenHeight), window_(std::move(window)) {}

  double width() override { return width_; }
  double height() override { return height_; }
  std::unique_ptr<platform::DisplayLink> makeDisplayLink(std::function<void(double seconds)> tick) override;

 private:
  const double width_;
  const double height_;
  const std::weak_ptr<DesktopWindow> window_;
};

}  // namespace VorselKelp::desktop
