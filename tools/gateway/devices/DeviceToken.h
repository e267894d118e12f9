#pragma once

#include <cstddef>

namespace gateway {

/// Bytes of a simulated device's token.
inline constexpr std::size_t deviceTokenBytes = 32;

}  // namespace gateway
