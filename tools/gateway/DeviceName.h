#pragma once

#include <string>
#include <string_view>

namespace gateway {

/// What a log calls the device of a token, so that two are told apart and none can be sent to: the first 8 of
/// a phone's digits. Push subscriptions begin alike, and each is a secret: 16 digits of the SHA-256 of
/// theirs.
std::string nameOf(std::string_view device);

}  // namespace gateway
