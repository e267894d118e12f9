#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelp/platform/Notification.h"

namespace brellixctl {

// How foretold and happened things are worded, both alike.

[[nodiscard]] std::string wordsFor(const std::vector<std::string>& texts);
[[nodiscard]] std::string wordsFor(const std::optional<std::string>& text);
[[nodiscard]] std::string wordsFor(const std::optional<VorselKelp::platform::NotificationSound>& sound);
[[nodiscard]] std::string wordsFor(const std::vector<VorselKelp::platform::NotificationAction>& actions);
/// What a tap opens; `url` is empty for nothing.
[[nodiscard]] std::string wordsFor(VorselKelp::PayloadLint::Tap::Opens opens, const std::string& url);

}  // namespace brellixctl
