#pragma once

#include <CLI/CLI.hpp>

#include "brellixctl/Commands.h"

namespace brellixctl {

/// What the command line takes behind "device". The request outlives the command.
void addDeviceOptions(CLI::App& device, DeviceRequest& request);

}  // namespace brellixctl
