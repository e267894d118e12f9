#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::gif {

/// The most bytes that a picture may take on its way here.
inline constexpr std::size_t pictureByteLimit = std::size_t{10} << 20;
/// The most pixels that are held of one picture.
inline constexpr std::int64_t displayPixelLimit = std::int64_t{16} << 20;

/// Decodes a downloaded picture for showing. A GIF of more than one frame keeps its bytes, so that it can be
/// played. Any thread; blocks for the work.
Result<ui::ImagePtr> decodeImage(platform::ImageDecoder& decoder, const std::string& bytes);

}  // namespace VorselKelp::gif
