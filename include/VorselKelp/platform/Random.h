#pragma once

#include <cstdint>

namespace VorselKelp::platform {

/// Random numbers, good enough for identifiers. Any thread.
class Random {
 public:
  virtual ~Random() = default;

  /// Uniform in [0, bound); `bound` is at least 1.
  virtual std::uint32_t below(std::uint32_t bound) = 0;
};

}  // namespace VorselKelp::platform
