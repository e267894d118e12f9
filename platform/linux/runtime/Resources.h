#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp::linux_platform {

/// The bytes of a file that comes with the library (at most 1 MiB), from the first folder that has it.
/// `name` is a plain file name; others are not found.
std::optional<std::string> readResource(std::string_view name);

}  // namespace VorselKelp::linux_platform
