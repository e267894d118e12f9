#pragma once

#include <memory>
#include <utility>

#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelpSimulator/HeadlessScreen.h"
#include "screen/DesktopWindow.h"

namespace VorselKelp::desktop {

/// Presents controllers one above the other in one window.
class DesktopPresenter final : public platform::ViewPresenter {
 public:
  /// Both are held weakly: what is shown may hold the core, which holds this.
  DesktopPresenter(std::weak_ptr<DesktopWindow> window, std::weak_ptr<ui::ViewController> root,
                   simulator::ScreenListener changed)
      : window_(std::move(window)), root_(std::move(root)), changed_(std::move(changed)) {}

  std::shared_ptr<ui::ViewController> rootViewController() override { return root_.lock(); }
  void present(const std::shared_ptr<ui::ViewController>& controller,
               const std::shared_ptr<ui::ViewController>& from, bool animated) override;
  void dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) override;
  /// A window has no status bar.
  void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>&) override {}

 private:
  const std::weak_ptr<DesktopWindow> window_;
  const std::weak_ptr<ui::ViewController> root_;
  const simulator::ScreenListener changed_;
};

}  // namespace VorselKelp::desktop
