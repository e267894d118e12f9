#include "image/PixbufInspection.h"

#include "image/MetadataFilter.h"

namespace VorselKelp::posix {

PixbufInspection::PixbufInspection(const PixbufLibrary& library) : loading_(library) {
  loading_.connect("size-prepared", G_CALLBACK(&PixbufInspection::onSize), this);
}

Result<platform::ImageInfo> PixbufInspection::run(platform::FunctionRef<std::string_view()> next,
                                                  std::int64_t pixelLimit) {
  const auto enough = [this] { return known_ || !loading_.problem().empty(); };
  const auto feed = [&](std::string_view bytes) { loading_.feed(bytes, enough); };
  MetadataFilter filter;
  while (!enough()) {
    const auto piece = next();
    if (piece.empty()) break;
    filter.run(piece, feed);
  }
  if (!known_ && loading_.problem().empty()) loading_.close();
  if (!known_) return Error{loading_.problem().empty() ? "not a picture" : loading_.problem()};
  if (width_ <= 0 || height_ <= 0 || std::int64_t{width_} * height_ > pixelLimit)
    return unusableSize(width_, height_);
  return platform::ImageInfo{width_, height_, loading_.extension()};
}

void PixbufInspection::onSize(GdkPixbufLoader*, int width, int height, void* self) {
  auto& inspection = *static_cast<PixbufInspection*>(self);
  inspection.width_ = width;
  inspection.height_ = height;
  inspection.known_ = true;
  inspection.loading_.refuse();
}

}  // namespace VorselKelp::posix
