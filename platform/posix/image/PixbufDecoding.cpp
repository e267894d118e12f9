#include "image/PixbufDecoding.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "image/JpegStructure.h"
#include "image/Orientation.h"

namespace VorselKelp::posix {
namespace {

constexpr int largestReduction = 8;
constexpr std::size_t pixelSize = 4;

int divideUp(int number, int by) {
  return number / by + (number % by != 0);
}

}  // namespace

PixbufDecoding::PixbufDecoding(const PixbufLibrary& library, std::string_view bytes, std::int64_t pixelLimit)
    : library_(library), bytes_(bytes), pixelLimit_(pixelLimit), loading_(library) {
  loading_.connect("size-prepared", G_CALLBACK(&PixbufDecoding::onSize), this);
  loading_.connect("area-prepared", G_CALLBACK(&PixbufDecoding::onPrepared), this);
  loading_.connect("area-updated", G_CALLBACK(&PixbufDecoding::onUpdated), this);
}

Result<ui::ImagePtr> PixbufDecoding::run() {
  loading_.feed(bytes_, [this] { return refused_; });
  loading_.close();
  if (refused_) return unusableSize(width_, height_);
  GdkPixbuf* pixbuf = loading_.pixbuf();
  if (!pixbuf) return Error{loading_.problem().empty() ? "not a picture" : loading_.problem()};
  const int width = library_.width(pixbuf);
  const int height = library_.height(pixbuf);
  if (std::int64_t{width} * height > pixelLimit_) return unusableSize(width, height);
  // What was never said to be decoded may be memory that nobody has written to.
  const bool gif = loading_.extension() == "gif";
  if ((endRow_ == 0 || gif) && !loading_.problem().empty()) return Error{loading_.problem()};
  const bool tracked = endRow_ > 0 && !gif;
  return copy(pixbuf, tracked ? firstRow_ : 0, tracked ? std::min(endRow_, height) : height);
}

void PixbufDecoding::onSize(GdkPixbufLoader*, int width, int height, void* self) {
  static_cast<PixbufDecoding*>(self)->chooseSize(width, height);
}

void PixbufDecoding::chooseSize(int width, int height) {
  width_ = width;
  height_ = height;
  // The exact sizes that the format can be decoded to: for any other, a larger one is made first.
  for (int by = 1; width > 0 && height > 0 && by <= largestReduction; by *= 2) {
    const int reducedWidth = divideUp(width, by);
    const int reducedHeight = divideUp(height, by);
    if (std::int64_t{reducedWidth} * reducedHeight <= pixelLimit_) {
      if (by > 1) loading_.setSize(reducedWidth, reducedHeight);
      return;
    }
    if (loading_.extension() != "jpg" || !isSingleScanJpeg(bytes_)) break;
  }
  refused_ = true;
  loading_.refuse();
}

void PixbufDecoding::onPrepared(GdkPixbufLoader*, void* self) {
  auto& decoding = *static_cast<PixbufDecoding*>(self);
  const std::string extension = decoding.loading_.extension();
  // An interlaced picture has its rows in an order of their own: where none has been yet, it is empty. Other
  // formats may have their pixels by now.
  GdkPixbuf* pixbuf = extension == "png" || extension == "jpg" ? decoding.loading_.pixbuf() : nullptr;
  if (pixbuf) decoding.library_.fill(pixbuf, 0);
}

void PixbufDecoding::onUpdated(GdkPixbufLoader*, int, int y, int, int height, void* self) {
  auto& decoding = *static_cast<PixbufDecoding*>(self);
  const int end = y + height;
  decoding.firstRow_ = decoding.endRow_ == 0 ? y : std::min(decoding.firstRow_, y);
  decoding.endRow_ = std::max(decoding.endRow_, end);
}

ui::ImagePtr PixbufDecoding::copy(GdkPixbuf* pixbuf, int firstRow, int endRow) const {
  const int width = library_.width(pixbuf);
  const char* orientation = library_.option(pixbuf, "orientation");
  const auto placed = placementOf(orientation ? std::atoi(orientation) : 1, width, library_.height(pixbuf));
  const auto stride = static_cast<std::size_t>(library_.rowStride(pixbuf));
  const auto channels = static_cast<std::size_t>(library_.channels(pixbuf));
  const guchar* from = library_.pixels(pixbuf);
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(placed.width) *
                                   static_cast<std::size_t>(placed.height) * pixelSize);
  for (int row = firstRow; row < endRow; ++row) {
    const guchar* source = from + static_cast<std::size_t>(row) * stride;
    auto at = placed.first + row * placed.down;
    if (channels == pixelSize && placed.right == 1) {
      std::memcpy(&pixels[static_cast<std::size_t>(at) * pixelSize], source,
                  static_cast<std::size_t>(width) * pixelSize);
      continue;
    }
    for (int x = 0; x < width; ++x, source += channels, at += placed.right) {
      std::uint8_t* target = &pixels[static_cast<std::size_t>(at) * pixelSize];
      target[3] = 255;
      std::memcpy(target, source, channels);
    }
  }
  return std::make_shared<ui::Image>(placed.width, placed.height, std::move(pixels));
}

}  // namespace VorselKelp::posix
