#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/Orientation.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

enum class PresentationStyle {
  automatic,
  fullScreen,
  /// Over everything, with what lies below still there and seen where the new screen paints nothing.
  overFullScreen,
};

/// A screen of the application. Made with std::make_shared; whoever presents it keeps it for as long as it is
/// presented. Main thread only.
class VORSELKELP_API ViewController : public std::enable_shared_from_this<ViewController> {
 public:
  ViewController() = default;
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;
  virtual ~ViewController() = default;

  PresentationStyle modalPresentationStyle = PresentationStyle::automatic;
  /// Whether this screen decides about the status bar although it does not cover the whole screen.
  bool modalPresentationCapturesStatusBarAppearance = false;

  /// The screen's view, made at the first call: loadView(), then viewDidLoad(). Null when loadView set none.
  const std::shared_ptr<View>& view();
  /// The view if it has been made, else null.
  [[nodiscard]] const std::shared_ptr<View>& viewIfLoaded() const { return view_; }
  void setView(std::shared_ptr<View> view) { view_ = std::move(view); }

  /// Makes the view and hands it to setView(); the base makes an empty one.
  virtual void loadView();
  virtual void viewDidLoad() {}
  virtual void viewWillAppear(bool animated) { (void)animated; }
  virtual void viewDidAppear(bool animated) { (void)animated; }
  virtual void viewWillDisappear(bool animated) { (void)animated; }
  virtual void viewDidDisappear(bool animated) { (void)animated; }

  /// The user wants to leave this screen without touching it, by the Escape key for example. Answers whether
  /// there was something to do; the base has nothing.
  virtual bool accessibilityPerformEscape() { return false; }

  /// A sum of InterfaceOrientations.
  [[nodiscard]] virtual unsigned supportedInterfaceOrientations() { return interfaceAll; }
  [[nodiscard]] virtual bool prefersStatusBarHidden() { return false; }

  [[nodiscard]] const std::shared_ptr<ViewController>& presentedViewController() const { return presented_; }
  [[nodiscard]] std::shared_ptr<ViewController> presentingViewController() const {
    return presenting_.lock();
  }

  // For platforms: the links between the one who presents and the one presented, and the calls that come with
  // appearing and going, so that every platform makes them in the same order.

  /// False, and nothing happens, when `controller` is presented already or this one presents another.
  bool link(const std::shared_ptr<ViewController>& controller);
  /// Undoes link(); what this controller presents goes first. Answers false when it was not presented.
  bool unlink();

 private:
  bool loading_ = false;
  std::shared_ptr<View> view_;
  std::shared_ptr<ViewController> presented_;
  std::weak_ptr<ViewController> presenting_;
};

}  // namespace VorselKelp::ui
