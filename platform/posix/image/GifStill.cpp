#include "image/GifStill.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace VorselKelp::posix {

Result<ui::ImagePtr> gifStill(platform::GifReader& reader) {
  const platform::GifFrame* frame = reader.next();
  if (!frame) return Error{"a GIF without a frame"};
  const int width = reader.width();
  const int height = reader.height();
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  const int columns = std::min(frame->width, width - frame->left);
  const int rows = std::min(frame->height, height - frame->top);
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      const std::uint8_t index =
          frame->indices[static_cast<std::size_t>(y) * static_cast<std::size_t>(frame->width) +
                         static_cast<std::size_t>(x)];
      if (index == frame->transparent || index >= frame->palette.size()) continue;
      const auto& color = frame->palette[index];
      auto* pixel = &pixels[(static_cast<std::size_t>(y + frame->top) * static_cast<std::size_t>(width) +
                             static_cast<std::size_t>(x + frame->left)) *
                            4];
      pixel[0] = color.red;
      pixel[1] = color.green;
      pixel[2] = color.blue;
      pixel[3] = 255;
    }
  }
  return ui::ImagePtr(std::make_shared<ui::Image>(width, height, std::move(pixels)));
}

}  // namespace VorselKelp::posix
