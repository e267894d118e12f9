#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSystem/ContentExtension.h"
#include "VorselKelpSystem/CountedURLSession.h"

namespace VorselKelp::system {

/// What draws a content extension's area. A process uses one, once: open() first, close() last. Main thread.
class ContentScreen {
 public:
  /// Null ones stay what they were in the platform.
  struct Services {
    std::shared_ptr<platform::Screen> screen;
    std::shared_ptr<platform::ViewPresenter> viewPresenter;
    std::shared_ptr<platform::WebViews> webViews;
  };

  virtual ~ContentScreen() = default;
  /// Shows `area`, whose view has the size that it wants, while `loop` runs. An error when there is no screen
  /// to be had.
  virtual Result<Services> open(const std::shared_ptr<ui::ViewController>& area,
                                const std::shared_ptr<posix::EventLoop>& loop) = 0;
  /// Lets go of what is shown.
  virtual void close() = 0;
};

/// What a content extension's process has besides its platform.
struct ContentProcess {
  std::shared_ptr<posix::EventLoop> loop;
  std::shared_ptr<CountedURLSession> session;
  std::shared_ptr<platform::ExtensionContext> context;
  ContentScreen& screen;
};

/// The life of a content extension: installs the platform in the library, calls `start`, asks `extension` for
/// its controller, has it shown, hands the notification over, and calls `live`, which returns when it has
/// been seen. The library's core has gone when this returns. An error says why nothing was shown, or is
/// `live`'s. Main thread, once in a process; `services` is let go.
VORSELKELP_API Status runContent(const ContentProcess& process, std::shared_ptr<platform::Platform> services,
                                 const platform::DeliveredNotification& notification,
                                 ContentExtension& extension, platform::FunctionRef<void()> start,
                                 platform::FunctionRef<Status(ui::ViewController&)> live);

}  // namespace VorselKelp::system
