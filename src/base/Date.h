#pragma once

#include <string>

namespace VorselKelp {

/// "Sun, 15 Nov 2026 02:24:43 GMT": the date form of HTTP headers. Seconds since 1970.
[[nodiscard]] std::string httpDateText(double secondsSince1970);

/// "2026-11-15 02:24:43 +0000".
[[nodiscard]] std::string dateDescription(double secondsSince1970);

/// Whole seconds, fraction dropped. A value that is not finite or does not fit stops the process: a device
/// whose clock is broken that far has no session to report.
[[nodiscard]] long long wholeSeconds(double secondsSince1970);

}  // namespace VorselKelp
