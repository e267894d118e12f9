#pragma once

#include <optional>
#include <string>

#include "VorselKelpSystem/Description.h"
#include "brellixctl/doctor/Finding.h"

namespace brellixctl {

// Each looks at one side of an application as it is installed on this desktop.

/// The session's bus, and whether it can start the application and its agent.
Findings checkBus(const std::string& application);
/// The files by which the session finds both. `description` becomes the file that the agent is given.
Findings checkFiles(const std::string& application, std::string& description);
/// The agent, which this starts, its distributor and its subscription.
Findings checkAgent(const std::string& application, const VorselKelp::system::Description& description);
/// The notification server, and the portal of sandboxed applications.
Findings checkNotifications();
/// Where the application keeps things, and whether the user lets it notify.
Findings checkFolders(const VorselKelp::system::Description& description);

}  // namespace brellixctl
