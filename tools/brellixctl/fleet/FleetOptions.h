#pragma once

#include <CLI/CLI.hpp>

#include "brellixctl/Commands.h"

namespace brellixctl {

/// What the command line takes behind "fleet". The request outlives the command.
void addFleetOptions(CLI::App& fleet, FleetRequest& request);

}  // namespace brellixctl
