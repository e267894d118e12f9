#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSystem/ServiceExtension.h"

namespace VorselKelp::simulator {

/// What the simulated device calls in a notification-service extension. All calls come on the main thread,
/// after the process's platform has been installed in the library.
class ServiceExtension : public system::ServiceExtension {
 public:
  /// Comes first: the place to name the application group.
  virtual void willStart(const Manifest& manifest) { (void)manifest; }
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
