#pragma once

#include <memory>
#include <string>

#include "VorselKelp/platform/Platform.h"
#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpSystem/CountedURLSession.h"
#include "VorselKelpSystem/ExtensionDescription.h"

namespace VorselKelp::system {

// What the processes of all extensions have in common.

/// A session that wakes the loop whenever a request has ended.
std::shared_ptr<CountedURLSession> makeExtensionSession(const std::shared_ptr<posix::EventLoop>& loop);

/// Where an extension's passing files are.
std::string temporaryFolderOf(const ExtensionDescription& description);

/// The platform of an extension without a screen. Nothing is opened before it is used.
std::shared_ptr<platform::Platform> makeExtensionPlatform(const ExtensionDescription& description,
                                                          std::shared_ptr<posix::EventLoop> loop,
                                                          std::shared_ptr<CountedURLSession> session,
                                                          std::shared_ptr<platform::Console> console);

/// What an extension's command line says.
struct ExtensionOptions {
  std::string identifier;           ///< empty: none was named
  std::optional<double> timeLimit;  ///< seconds
};

/// `--id ID` and `--time-limit S`. The error is a line that says what is wrong.
Result<ExtensionOptions> readExtensionOptions(int argc, const char* const* argv);

/// Says in one line why the process ends, and answers `status`.
int endWith(const Error& error, int status);

}  // namespace VorselKelp::system
