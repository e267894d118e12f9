#pragma once

#include <string>
#include <string_view>

namespace brellixctl {

/// Whether this is the scheme, the host and perhaps the port of a server, such as "https://host:8080", and
/// nothing behind them.
[[nodiscard]] bool isServerAddress(std::string_view text);

/// Scheme, host and port of an http or https URL; empty for any other text.
[[nodiscard]] std::string_view originOf(std::string_view url);

}  // namespace brellixctl
