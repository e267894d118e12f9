#pragma once

#include <cstdint>
#include <string_view>

#include "VorselKelp/platform/ImageDecoder.h"
#include "image/PixbufLoading.h"

namespace VorselKelp::posix {

/// One picture being looked at. The loader is asked for a picture of no size, which makes it stop before it
/// allocates pixels.
class PixbufInspection {
 public:
  explicit PixbufInspection(const PixbufLibrary& library);
  /// `next` gives the picture piece by piece, and an empty piece at its end.
  Result<platform::ImageInfo> run(platform::FunctionRef<std::string_view()> next, std::int64_t pixelLimit);

 private:
  static void onSize(GdkPixbufLoader* loader, int width, int height, void* self);

  PixbufLoading loading_;
  bool known_ = false;
  int width_ = 0;
  int height_ = 0;
};

}  // namespace VorselKelp::posix
