#pragma once

#include <string>

#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::testing_platform {

/// Recognises PNG, JPEG and GIF by their first bytes and reads the size that their headers give. It never
/// looks at the pixels, so a picture that is cut off behind its header counts as one. Stateless.
class HeaderImageDecoder final : public platform::ImageDecoder {
 public:
  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) override;
};

/// The beginning of a picture, enough for HeaderImageDecoder and for nobody else.
std::string pngBeginning(unsigned width, unsigned height);
std::string jpegBeginning(unsigned width, unsigned height);
std::string gifBeginning(unsigned width, unsigned height);

}  // namespace VorselKelp::testing_platform
