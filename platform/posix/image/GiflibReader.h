#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "VorselKelp/platform/ImageDecoder.h"
#include "image/GifLibrary.h"

namespace VorselKelp::posix {

/// Opens a GIF. The reader shares `library` and the `owner` of the bytes, which may be none when they outlive
/// the reader anyway.
Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const GifLibrary> library,
                                                     std::string_view bytes,
                                                     std::shared_ptr<const std::string> owner,
                                                     std::int64_t pixelLimit);

}  // namespace VorselKelp::posix
