#pragma once

#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelpPosix/EventLoop.h"

namespace VorselKelp::system {

/// Prepares a process that lives for one delivery: memory is asked for once, not in pieces, and SQLite does
/// not count what it uses. Before anything else of the process uses SQLite.
VORSELKELP_API void prepareShortLife();

/// Removes the attachments' folders that processes which were killed left in their temporary folder. Those
/// younger than an hour stay: another process may be about to hand them over.
VORSELKELP_API void removeStaleAttachments(const std::string& temporaryFolder);

/// The process ends: lets the library's core go, so that its stores are closed in good order and their logs
/// do not grow from process to process. Work that waits on the loop would keep it; the session must be closed
/// before, or answers that are still to come do the same.
VORSELKELP_API void leaveCore(posix::EventLoop& loop);

}  // namespace VorselKelp::system
