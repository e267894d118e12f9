#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/platform/WebViews.h"

namespace VorselKelp {

/// Names under which the permission page finds its two bridges.
using platform::answerBridge;
inline constexpr const char* consoleBridge = "logging";

/// The permission page: loads the prompt script from `scriptHost` (scheme and host), hands it the
/// configuration as the global `_VSPC`, and posts the script's two events to the answer bridge.
/// `configuration` becomes a part of the page's script as it stands.
[[nodiscard]] std::string promptPage(std::string_view scriptHost, std::string_view configuration);

/// Runs before any script of the page: sends what the page writes to its console, and the errors that nobody
/// catches, to the console bridge.
[[nodiscard]] std::string_view consoleForwardingScript();

}  // namespace VorselKelp
