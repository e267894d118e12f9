#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelpSystem/ExtensionDescription.h"
#include "VorselKelpSystem/ServiceExtension.h"

namespace VorselKelp::system {

/// A service extension's main function, for a program that a Delivery runs: reads the payload from standard
/// input, installs the process's platform in the library, hands the notification to `extension`, and writes
/// the content to standard output. What else the process prints there goes to standard error. Answers the
/// exit status: 0, 1 when the payload can't be read, 2 for a command line that says nothing sensible.
///
///   --id ID            the notification's identifier
///   --time-limit S     the extension's time (default 30)
///
/// The process lives until the handler was called and its own requests have ended, at most its time.
VORSELKELP_API int runServiceMain(int argc, const char* const* argv, const ExtensionDescription& description,
                                  ServiceExtension& extension);

}  // namespace VorselKelp::system
