#include "gif/ImageLoading.h"

#include <memory>
#include <vector>

namespace VorselKelp::gif {

Result<ui::ImagePtr> decodeImage(platform::ImageDecoder& decoder, const std::string& bytes) {
  auto still = decoder.decode(bytes, displayPixelLimit);
  const auto info = decoder.inspect(bytes, displayPixelLimit);
  if (!still || !info || info->fileExtension != "gif") return still;

  const auto shared = std::make_shared<const std::string>(bytes);
  const auto reader = decoder.openGif(shared, displayPixelLimit);
  if (!reader || !(*reader)->next() || !(*reader)->next()) return still;
  const ui::Image& image = **still;
  const auto pixels = image.pixels();
  return ui::ImagePtr(std::make_shared<ui::Image>(
      image.width(), image.height(), std::vector<std::uint8_t>(pixels.begin(), pixels.end()), shared));
}

}  // namespace VorselKelp::gif
