#pragma once

namespace VorselKelp::simulator {

/// Prepares a process that lives for one delivery: memory is asked for once, not in pieces, and SQLite does
/// not count what it uses. Before anything else of the process uses SQLite.
void prepareShortLife();

}  // namespace VorselKelp::simulator
