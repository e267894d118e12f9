#pragma once

namespace VorselKelp::posix {

/// The name of a way for SQLite to reach its files that takes an absolute path as it stands. SQLite's own
/// looks at each folder of it for a symbolic link, which a process that lives for a moment pays for with
/// every opening, and which only a database file that is itself a link would need: such a one is not opened.
/// Any thread.
const char* absolutePaths();

}  // namespace VorselKelp::posix
