#pragma once

#include <cstddef>

namespace VorselKelp::posix {

/// Where the pixels of a file belong in the picture as it is to be seen: cameras write them as they were
/// held, and say how.
struct Placement {
  int width = 0;   ///< of the picture
  int height = 0;  ///< of the picture
  // Of the picture's pixels, counted from the upper left one, row by row: where the file's first one belongs,
  // and how far it is from each to the next one in its row, and in its column.
  std::ptrdiff_t first = 0;
  std::ptrdiff_t right = 0;
  std::ptrdiff_t down = 0;
};

/// `orientation` as EXIF has it: 1 to 8; any other number counts as 1. `width` and `height` are the file's.
[[nodiscard]] Placement placementOf(int orientation, int width, int height);

}  // namespace VorselKelp::posix
