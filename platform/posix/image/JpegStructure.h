#pragma once

#include <string_view>

namespace VorselKelp::posix {

/// Whether a JPEG comes in one scan of sequential data. Of any other, the decoder holds the coefficients of
/// all pixels, however small the picture is that it is asked for.
[[nodiscard]] bool isSingleScanJpeg(std::string_view bytes);

}  // namespace VorselKelp::posix
