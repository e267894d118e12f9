#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/ui/ViewController.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSimulator/ProcessScreen.h"

namespace VorselKelp::simulator {

/// What the system calls in a notification-content extension. All calls come on the main thread, after the
/// process's platform has been installed in the library.
class ContentExtension {
 public:
  virtual ~ContentExtension() = default;

  /// Comes first: the place to name the application group.
  virtual void willStart(const Manifest& manifest) { (void)manifest; }
  /// How large the extension's area is to be for this notification.
  virtual ui::Size preferredContentSize(const platform::DeliveredNotification& notification) = 0;
  /// The extension's controller, which must be a platform::NotificationContentExtension too: the notification
  /// is handed to that. `context` is what extensionContext() is to answer.
  virtual std::shared_ptr<ui::ViewController> makeController(
      std::shared_ptr<platform::ExtensionContext> context) = 0;
};

/// A content extension's main function: composes the process's platform from the command line, installs it in
/// the library, shows one delivered notification and lets the simulated user act on it. Returns the exit
/// status: 0, 1 when the process could not start, 2 for a command line that says nothing sensible.
///
///   --home DIR --app FILE    the simulated device and the application's manifest
///   --id ID                  the delivered notification
///   --do right,left,open     what the user does, in order, each when the last one's requests have ended
///   --png FILE               a picture of the area in the end, where there is a window
///   --pictures DIR           a picture after each act as well
///   --stay                   goes on until the user closes the window, or the time ends
///   --time-limit S           the extension's time (default 30)
///   --channel FD             reports as JSON lines to this descriptor; without it the console is stdout
VORSELKELP_API int runContentExtension(int argc, const char* const* argv, ContentExtension& extension);
VORSELKELP_API int runContentExtension(int argc, const char* const* argv, ContentExtension& extension,
                                       ProcessScreen& screen);

}  // namespace VorselKelp::simulator
