#pragma once

#include <CLI/CLI.hpp>

#include "brellixctl/Commands.h"

namespace brellixctl {

// What the command line takes behind "send" and "vapid". The requests outlive the commands.

void addSendOptions(CLI::App& send, SendRequest& request);
void addVapidOptions(CLI::App& vapid, VapidRequest& request);

}  // namespace brellixctl
