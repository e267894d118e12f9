#pragma once

#include <memory>

#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::posix {

/// The first frame that `reader` comes to, on its canvas, as far as the file holds it. An error when there is
/// none.
Result<ui::ImagePtr> gifStill(platform::GifReader& reader);

}  // namespace VorselKelp::posix
