#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Device.h"
#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/platform/WebViews.h"
#include "VorselKelp/ui/ViewController.h"

using GtkOverlay = struct _GtkOverlay;

namespace VorselKelp::gtk {

struct StageOptions {
  /// The overlay that the next screen is put over, in a window of the application's; asked each time. Null
  /// when there is no window: then nothing is shown.
  std::function<GtkOverlay*()> overlay;
  /// What stands for the application's own screen, to present from. The stage holds it weakly.
  std::weak_ptr<ui::ViewController> root;
  /// Hears of each screen, and each page of the browser, that has appeared (true) or gone.
  std::function<void(bool appeared)> screenChanged = [](bool) {};
};

/// The system's question whether the application may show notifications, while it is on the screen. Main
/// thread.
class PermissionQuestion {
 public:
  virtual ~PermissionQuestion() = default;
  /// Taps one of its buttons for the user; nothing happens once it was answered.
  virtual void tap(bool allow) = 0;
};

/// Shows the library's screens over an application's own windows, one above the other: what the core
/// presents, the in-app browser, the permission question. A window may be closed at any time: what was over
/// it goes as if it had been dismissed. What is shown lives no longer than the stage. Main thread.
class Stage {
 public:
  virtual ~Stage() = default;

  /// Holds the stage weakly, as do all the services below.
  virtual std::shared_ptr<platform::ViewPresenter> presenter() = 0;
  /// As large as the window, in its pixels. Its display links tick with the frames of a window that is there
  /// when they are unpaused, or when the window before it goes.
  virtual std::shared_ptr<platform::Screen> screen() = 0;
  /// A sheet with the page's address and a button that closes it. One page at a time; the next one takes the
  /// place of the one before.
  virtual std::shared_ptr<platform::InAppBrowser> makeBrowser(
      std::shared_ptr<platform::WebViews> webViews) = 0;
  /// `answered` runs once, with what the user chose; absent when the window went before. Where there is no
  /// window it runs at once, without an answer, and what is returned is null.
  virtual std::shared_ptr<PermissionQuestion> askPermission(
      const std::string& application, std::function<void(std::optional<bool> allowed)> answered) = 0;

  /// Whether everything that is shown has been laid out and painted as it is now.
  [[nodiscard]] virtual bool painted() const = 0;
  /// Does at once what waits for the next picture.
  virtual void flush() = 0;
  /// Where a view is, in its window's overlay; an empty rectangle for one that is not on the stage.
  [[nodiscard]] virtual ui::Rect boundsOf(ui::View& view) const = 0;
};

VORSELKELP_API std::shared_ptr<Stage> makeStage(StageOptions options);

}  // namespace VorselKelp::gtk
