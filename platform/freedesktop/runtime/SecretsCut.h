#pragma once

#include <string>
#include <string_view>

namespace VorselKelp::freedesktop {

/// `text` fit to be shown: every run of more than 20 characters of which tokens, keys and ids are made
/// (letters, digits, "_-+%=") is cut to its first eight; of the value of an "endpoint" the scheme and the
/// host are left, of "auth" and "p256dh" nothing. Any bytes.
[[nodiscard]] std::string secretsCut(std::string_view text);

}  // namespace VorselKelp::freedesktop
