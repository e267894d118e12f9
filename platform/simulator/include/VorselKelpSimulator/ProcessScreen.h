#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSimulator/DeviceServices.h"
#include "VorselKelpSimulator/HeadlessScreen.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {

/// What a process shows things with. One process uses one screen, once: open() first, close() last. Main
/// thread.
class ProcessScreen {
 public:
  /// What the screen is opened for.
  struct Setting {
    const Manifest& manifest;
    ProcessKind kind = ProcessKind::application;
    ui::Size size;  ///< of the window, points
    std::shared_ptr<posix::EventLoop> loop;
    std::shared_ptr<platform::URLSession> urlSession;  ///< for pages that no engine loads
    std::shared_ptr<ui::ViewController> root;
    PromptAnswer promptAnswer = PromptAnswer::none;
    /// To be told of each controller, and each page of the browser, that has appeared or gone.
    ScreenListener screenChanged = [](bool) {};
    /// Asks for a picture of what is shown now, under this name; does nothing where none are wanted.
    std::function<void(const std::string& name)> picture;
    /// The user did something with a notification that was shown outside the window.
    std::function<void(platform::NotificationResponse)> responded;
  };
  struct Services {
    std::shared_ptr<platform::Screen> screen;
    std::shared_ptr<platform::ViewPresenter> viewPresenter;
    std::shared_ptr<platform::WebViews> webViews;
    /// Null where pages are not shown: then they are only told.
    std::shared_ptr<platform::InAppBrowser> inAppBrowser;
    /// Shows a notification outside the window, with the buttons of its category; null where nobody would see
    /// it. `answer` says once whether it is shown.
    std::function<void(platform::NotificationRequest, platform::NotificationCategory,
                       platform::UniqueFunction<void(Status)> answer)>
        notify;
    /// Watches real beacons; null: the simulated device's are watched.
    std::shared_ptr<platform::LocationServices> location;
    /// Shows the system's permission dialog; null where there is no place for it.
    PermissionDialog permissionDialog;
    /// Shows the badge outside the window; null where nobody would see it.
    std::function<void(std::int64_t)> badge;
  };

  virtual ~ProcessScreen() = default;

  /// What the process's loop waits with; null for the loop's own way.
  virtual std::shared_ptr<posix::LoopWaiter> makeWaiter() = 0;
  /// An error when there is no screen to be had.
  virtual Result<Services> open(Setting setting) = 0;
  /// Whether something is to be seen, so that pictures can be taken.
  [[nodiscard]] virtual bool visible() const = 0;
  /// Whether what changed last has been laid out and drawn, no page is being loaded or answered, and nothing
  /// is on its way to the desktop.
  virtual bool drawn() = 0;
  /// Whether the user has closed the window; the loop is woken then. Where there is none, true.
  [[nodiscard]] virtual bool left() const = 0;
  /// What is shown now, as a PNG file.
  virtual Status writePicture(const std::string& path) = 0;
  virtual void close() = 0;
};

/// A screen that shows nothing: controllers live their lives, pages are recorded.
VORSELKELP_API std::shared_ptr<ProcessScreen> headlessScreen();

}  // namespace VorselKelp::simulator
