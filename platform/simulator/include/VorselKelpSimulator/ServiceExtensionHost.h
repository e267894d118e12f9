#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelpSimulator/Manifest.h"

namespace VorselKelp::simulator {

/// What the system calls in a notification-service extension. All calls come on the main thread, after the
/// process's platform has been installed in the library.
class ServiceExtension {
 public:
  using ContentHandler = std::function<void(std::shared_ptr<platform::NotificationContent>)>;

  virtual ~ServiceExtension() = default;

  /// Comes first: the place to name the application group.
  virtual void willStart(const Manifest& manifest) { (void)manifest; }

  /// A notification is to be shown. `best` is a copy of its content for the extension to change; `handler`
  /// shows what it is given. It may be called on any thread; only the first call counts.
  virtual void didReceive(const platform::NotificationRequest& request,
                          std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) = 0;

  /// The time is over and nothing was shown: the last moment to call the handler.
  virtual void serviceExtensionTimeWillExpire() = 0;
};

/// A service extension's main function: composes the process's platform from the command line, installs it in
/// the library and hands one notification to `extension`. Returns the exit status: 0, 1 when the process
/// could not start or the payload cannot be read, 2 for a command line that says nothing sensible.
///
///   --home DIR --app FILE    the simulated device and the application's manifest
///   --payload FILE           the remote notification's JSON, at most 64 MiB (default: standard input)
///   --id ID                  the notification's identifier
///   --time-limit S           the extension's time (default 30)
///   --channel FD             reports as JSON lines to this descriptor; without it the console is stdout
///
/// The process lives until the handler was called and its own requests have ended, at most its time. What
/// killed processes left in the extension's temporary folder is removed at the start.
VORSELKELP_API int runServiceExtension(int argc, const char* const* argv, ServiceExtension& extension);

}  // namespace VorselKelp::simulator
