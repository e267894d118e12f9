#include "gif/FramePlan.h"

#include <algorithm>
#include <cmath>

#include "gif/AxisScale.h"

namespace VorselKelp::gif {
namespace {

/// What a reader holds beside a frame's indices: code tables and palettes.
constexpr std::int64_t readerSize = std::int64_t{48} << 10;
/// What an image costs beside its pixels.
constexpr std::int64_t imageOverhead = 256;
constexpr std::int64_t bytesPerPixel = 4;
/// A frame may be this large though its canvas is smaller; it is cut to the canvas.
constexpr std::int64_t smallFrame = std::int64_t{16} << 10;

}  // namespace

std::optional<FramePlan> planFrames(int width, int height, std::size_t budget) {
  const auto pixels = std::int64_t{width} * height;
  FramePlan plan{width, height, width, height, std::max(pixels, smallFrame), 0};
  const auto room = static_cast<std::int64_t>(std::min<std::size_t>(budget, INT32_MAX)) - readerSize -
                    plan.largest - 2 * imageOverhead - width * std::int64_t{sizeof(AxisScale::Share)};
  // Three canvases: what is seen, what takes its place, and what a frame that is to be taken away again has
  // saved.
  const auto mostPixels = room / 3 / bytesPerPixel;
  if (mostPixels <= 0) return std::nullopt;
  if (pixels > mostPixels) {
    const double scale = std::sqrt(static_cast<double>(mostPixels) / static_cast<double>(pixels));
    plan.drawnWidth = static_cast<int>(width * scale);
    plan.drawnHeight = static_cast<int>(height * scale);
  }
  if (plan.drawnWidth * 2 < width || plan.drawnHeight * 2 < height || plan.drawnWidth * plan.drawnHeight == 0)
    return std::nullopt;
  const auto canvas = std::int64_t{plan.drawnWidth} * plan.drawnHeight * bytesPerPixel;
  plan.mostKept = static_cast<std::size_t>((room - canvas + 2 * imageOverhead) / (canvas + imageOverhead));
  return plan;
}

}  // namespace VorselKelp::gif
