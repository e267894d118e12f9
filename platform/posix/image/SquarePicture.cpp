#include "VorselKelpPosix/SquarePicture.h"

#include <algorithm>

#include "image/PixbufLibrary.h"

namespace VorselKelp::posix {
namespace {

/// An object of the library, given back in the end.
class PixbufHold {
 public:
  PixbufHold(const PixbufLibrary& library, GdkPixbuf* pixbuf) : library_(library), pixbuf_(pixbuf) {}
  ~PixbufHold() {
    if (pixbuf_) library_.unref(pixbuf_);
  }
  PixbufHold(const PixbufHold&) = delete;
  PixbufHold& operator=(const PixbufHold&) = delete;
  [[nodiscard]] GdkPixbuf* get() const { return pixbuf_; }

 private:
  const PixbufLibrary& library_;
  GdkPixbuf* const pixbuf_;
};

Result<std::string> pngOf(const PixbufLibrary& library, GdkPixbuf* pixbuf) {
  gchar* bytes = nullptr;
  gsize size = 0;
  GError* error = nullptr;
  if (!library.saveToBuffer(pixbuf, &bytes, &size, "png", nullptr, nullptr, &error)) {
    Error why{error ? error->message : "a picture can't be written"};
    if (error) library.errorFree(error);
    return why;
  }
  std::string png(bytes, size);
  library.memoryFree(bytes);
  return png;
}

}  // namespace

Result<std::string> squarePng(const ui::Image& image, int longestSide, const ImageDecoderOptions& options) {
  constexpr int pixelSize = 4;
  constexpr int bitsEach = 8;
  const PixbufLibrary library(options.libraryName);
  if (!library.error().empty()) return Error{"gdk-pixbuf can't be loaded: " + library.error()};
  const int whole = std::min(image.width(), image.height());
  const int side = std::min(whole, longestSide);
  if (side <= 0) return Error{"a picture without a size"};
  const PixbufHold all(
      library, library.newFromData(image.pixels().data(), GDK_COLORSPACE_RGB, TRUE, bitsEach, image.width(),
                                   image.height(), image.width() * pixelSize, nullptr, nullptr));
  const PixbufHold middle(library, library.part(all.get(), (image.width() - whole) / 2,
                                                (image.height() - whole) / 2, whole, whole));
  const PixbufHold square(library, library.scale(middle.get(), side, side, GDK_INTERP_BILINEAR));
  if (!square.get()) return Error{"there is no memory for a picture"};
  return pngOf(library, square.get());
}

}  // namespace VorselKelp::posix
