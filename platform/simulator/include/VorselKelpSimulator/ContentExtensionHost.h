#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelpSimulator/Manifest.h"
#include "VorselKelpSimulator/ProcessScreen.h"
#include "VorselKelpSystem/ContentExtension.h"

namespace VorselKelp::simulator {

/// What the simulated device calls in a notification-content extension. All calls come on the main thread,
/// after the process's platform has been installed in the library.
class ContentExtension : public system::ContentExtension {
 public:
  /// Comes first: the place to name the application group.
  virtual void willStart(const Manifest& manifest) { (void)manifest; }
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
