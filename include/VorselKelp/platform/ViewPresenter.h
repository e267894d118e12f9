#pragma once

#include <memory>

#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp::platform {

/// Shows controllers on the screen. The application's screen observers hear of each one that has appeared or
/// gone, and of the pages of the in-app browser. Main thread.
class ViewPresenter {
 public:
  virtual ~ViewPresenter() = default;

  /// The controller at the root of the application's key window; null when there is no window, as in an
  /// extension.
  virtual std::shared_ptr<ui::ViewController> rootViewController() = 0;

  /// Shows `controller` over `from` in the controller's presentation style and keeps it until it is
  /// dismissed: viewWillAppear, layout, viewDidAppear. A controller that is presented already, a `from` that
  /// presents another, and a null one leave everything as it is, with a line on standard error.
  virtual void present(const std::shared_ptr<ui::ViewController>& controller,
                       const std::shared_ptr<ui::ViewController>& from, bool animated) = 0;

  /// Takes `controller`, and all that it presents, from the screen: viewWillDisappear, viewDidDisappear, and
  /// then it is let go. Nothing happens to one that is not presented.
  virtual void dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) = 0;

  /// `controller` has changed its mind about the status bar.
  virtual void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>& controller) = 0;
};

}  // namespace VorselKelp::platform
