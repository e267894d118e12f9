#pragma once

#include <cstdint>
#include <string_view>

#include "VorselKelp/Result.h"
#include "VorselKelp/ui/Image.h"
#include "image/PixbufLoading.h"

namespace VorselKelp::posix {

/// One picture being decoded, to no more than `pixelLimit` pixels.
class PixbufDecoding {
 public:
  PixbufDecoding(const PixbufLibrary& library, std::string_view bytes, std::int64_t pixelLimit);
  Result<ui::ImagePtr> run();

 private:
  static void onSize(GdkPixbufLoader* loader, int width, int height, void* self);
  static void onPrepared(GdkPixbufLoader* loader, void* self);
  static void onUpdated(GdkPixbufLoader* loader, int x, int y, int width, int height, void* self);

  void chooseSize(int width, int height);
  [[nodiscard]] ui::ImagePtr copy(GdkPixbuf* pixbuf, int firstRow, int endRow) const;

  const PixbufLibrary& library_;
  const std::string_view bytes_;
  const std::int64_t pixelLimit_;
  PixbufLoading loading_;
  bool refused_ = false;
  int width_ = 0;
  int height_ = 0;
  // The rows that have been decoded. A bitmap grows from its last row upwards.
  int firstRow_ = 0;
  int endRow_ = 0;
};

}  // namespace VorselKelp::posix
