#pragma once

#include <memory>
#include <utility>

#include "VorselKelp/platform/ViewPresenter.h"
#include "stage/OverlayStage.h"

namespace VorselKelp::gtk {

/// Presents controllers one above the other.
class StagePresenter final : public platform::ViewPresenter {
 public:
  /// Held weakly: what is shown may hold the core, which holds this.
  explicit StagePresenter(std::weak_ptr<OverlayStage> stage) : stage_(std::move(stage)) {}

  std::shared_ptr<ui::ViewController> rootViewController() override;
  void present(const std::shared_ptr<ui::ViewController>& controller,
               const std::shared_ptr<ui::ViewController>& from, bool animated) override;
  void dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) override;
  /// A window has no status bar.
  void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>&) override {}

 private:
  const std::weak_ptr<OverlayStage> stage_;
};

}  // namespace VorselKelp::gtk
