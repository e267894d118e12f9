#include "image/Orientation.h"

namespace VorselKelp::posix {

Placement placementOf(int orientation, int width, int height) {
  if (orientation < 1 || orientation > 8) orientation = 1;
  const bool turned = orientation >= 5;  // its rows are the picture's columns
  const bool rightToLeft = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
  const bool upwards = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
  Placement placed{turned ? height : width, turned ? width : height};
  const std::ptrdiff_t row = placed.width;
  placed.right = turned ? row : 1;
  placed.down = turned ? 1 : row;
  if (rightToLeft) {
    placed.first += placed.right * (width - 1);
    placed.right = -placed.right;
  }
  if (upwards) {
    placed.first += placed.down * (height - 1);
    placed.down = -placed.down;
  }
  return placed;
}

}  // namespace VorselKelp::posix
