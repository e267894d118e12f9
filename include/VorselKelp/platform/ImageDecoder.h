#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::platform {

/// What a picture says of itself.
struct ImageInfo {
  int width = 0;   ///< pixels
  int height = 0;  ///< pixels
  /// The usual file name extension of the format, without the full stop: "png", "jpg", "gif"...
  std::string fileExtension;
};

/// Reads still pictures. Any thread; blocks for the work.
class ImageDecoder {
 public:
  virtual ~ImageDecoder() = default;

  /// Recognises `bytes` as a picture without decoding its pixels, so that the memory used depends neither on
  /// the picture's size nor on its truth. An error when it is no picture that this system shows, or when it
  /// has more than `pixelLimit` pixels.
  virtual Result<ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) = 0;
};

}  // namespace VorselKelp::platform
