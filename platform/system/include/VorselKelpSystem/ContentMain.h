#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSystem/ContentExtension.h"
#include "VorselKelpSystem/ContentRun.h"
#include "VorselKelpSystem/ExtensionDescription.h"
#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::system {

/// The screen of a content extension's process.
class ContentWindow : public ContentScreen {
 public:
  /// What the process's loop waits with, before open(); null for the loop's own way.
  virtual std::shared_ptr<posix::LoopWaiter> makeWaiter() = 0;
  /// Whether the user has had enough: the window is closed. The loop is to be woken then.
  [[nodiscard]] virtual bool left() const = 0;
};

/// What a content extension's process gets from whoever writes it.
struct ContentPorts {
  std::shared_ptr<ContentWindow> window;
  /// What the area's size is reckoned from, before the window is open; not null.
  std::shared_ptr<platform::Screen> screen;
  /// Opens what the user chose in the extension's area: the application, or a page.
  std::shared_ptr<UrlOpener> opener;
  std::shared_ptr<platform::Console> console = nullptr;  ///< none: standard output
};

/// A content extension's main function: reads the notification, as encodeDelivered() writes it, from standard
/// input, installs the process's platform in the library, and shows what `extension` makes of it until the
/// user leaves the window and the process's own requests have ended. Answers the exit status: 0, 1 when the
/// notification can't be read or shown, 2 for a command line that says nothing sensible.
///
///   --id ID            the notification's identifier, in place of the one that was read
///   --time-limit S     ends the process after that time in any case
VORSELKELP_API int runContentMain(int argc, const char* const* argv, const ExtensionDescription& description,
                                  ContentExtension& extension, const ContentPorts& ports);

}  // namespace VorselKelp::system
