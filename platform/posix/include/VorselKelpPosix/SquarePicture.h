#pragma once

#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/ui/Image.h"
#include "VorselKelpPosix/PixbufImageDecoder.h"

namespace VorselKelp::posix {

/// The middle of a picture as a square PNG of at most `longestSide` pixels a side; small ones are not made
/// larger. Any thread; blocks for the work.
[[nodiscard]] VORSELKELP_API Result<std::string> squarePng(const ui::Image& image, int longestSide,
                                                           const ImageDecoderOptions& options = {});

}  // namespace VorselKelp::posix
