#pragma once

#include <stop_token>

#include "VorselKelpSystem/ChildProcess.h"

namespace phone {

using VorselKelp::system::ChildCommand;
using VorselKelp::system::ChildOutcome;

/// The descriptor that the application's processes write their events to.
inline constexpr int channelDescriptor = 3;

/// The absolute path of a program; a name is that of an executable beside this one.
std::string pathOf(const std::string& program);

/// Why the program could not be started, and what helps.
VorselKelp::Error startFailure(const std::string& program, const VorselKelp::Error& reason);

/// Runs a process of the application to its end, and tells a person who waits for long that it is still at
/// work, unless it is to be quiet. Its program may be a name as for pathOf(); its events come over a
/// descriptor of their own. `stop` kills it.
VorselKelp::Result<ChildOutcome> runProcess(ChildCommand command, bool quiet = false,
                                            const std::stop_token& stop = {});

}  // namespace phone
