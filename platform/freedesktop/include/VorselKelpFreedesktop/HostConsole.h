#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Console.h"

namespace VorselKelp::freedesktop {

/// The library's lines as debug messages of GLib's log, domain "VorselKelp": shown by an application with its
/// own, and by default to those alone who set G_MESSAGES_DEBUG.
///
/// On a desktop whoever knows a device's token can send to it. So both consoles show of an unbroken run of
/// more than 20 letters, digits and the like its first eight characters, and of a push subscription's members
/// not more than the server.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::Console> makeDebugConsole();

/// The same lines appended to a file that its owner alone may read; one that was there before becomes so. An
/// error when it can't be opened, is no file of this user's, or is a link.
[[nodiscard]] VORSELKELP_API Result<std::shared_ptr<platform::Console>> makeFileConsole(
    const std::string& path);

}  // namespace VorselKelp::freedesktop
