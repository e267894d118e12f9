#pragma once

#include <string>

namespace VorselKelp::benchmarks {

inline constexpr int gifWidth = 400;
inline constexpr int gifHeight = 300;
inline constexpr int gifFrames = 200;

/// An animation that plays for ever, each frame of which covers the canvas with large areas of colour.
[[nodiscard]] std::string flatGif();

}  // namespace VorselKelp::benchmarks
