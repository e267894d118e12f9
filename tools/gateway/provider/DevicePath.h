#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "gateway/Notification.h"

namespace gateway {

/// The token's bytes of "/3/device/<digits>", or what a provider is answered that asks for something else.
std::variant<std::string, Answer> deviceOf(std::string_view path);

}  // namespace gateway
