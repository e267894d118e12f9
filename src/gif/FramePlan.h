#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace VorselKelp::gif {

/// How one animated GIF is held within a budget.
struct FramePlan {
  int width = 0;  ///< of the file's canvas, in pixels
  int height = 0;
  int drawnWidth = 0;  ///< of what is shown
  int drawnHeight = 0;
  std::int64_t largest = 0;  ///< pixels of a frame in the file
  std::size_t mostKept = 0;  ///< images that may exist at once
};

/// Absent when not even half the size fits `budget`, in bytes.
[[nodiscard]] std::optional<FramePlan> planFrames(int width, int height, std::size_t budget);

}  // namespace VorselKelp::gif
