#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/ui/Image.h"

namespace VorselKelp::platform {

/// What a picture says of itself.
struct ImageInfo {
  int width = 0;   ///< pixels
  int height = 0;  ///< pixels
  /// The usual file name extension of the format, without the full stop: "png", "jpg", "gif"...
  std::string fileExtension;
};

struct GifColor {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
};

/// What happens to a frame when the next one is due, with the format's numbers; others count as `keep`.
enum class GifDisposal { unspecified = 0, keep = 1, background = 2, previous = 3 };

/// One frame as the file holds it. The spans are the reader's and hold until its next call.
struct GifFrame {
  // Where it goes on the canvas, in pixels; a hostile file places it anywhere.
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  /// One index into the palette for each pixel, rows from the top (whatever order the file has them in). An
  /// index beyond the palette is possible.
  std::span<const std::uint8_t> indices;
  std::span<const GifColor> palette;
  std::optional<std::uint8_t> transparent;  ///< the index that shows what is below
  GifDisposal disposal = GifDisposal::unspecified;
  int delay = 0;  ///< hundredths of a second, as the file has it
};

/// Reads an animated GIF frame by frame. Used on one thread at a time.
class GifReader {
 public:
  virtual ~GifReader() = default;
  [[nodiscard]] virtual int width() const = 0;   ///< of the canvas, pixels
  [[nodiscard]] virtual int height() const = 0;  ///< of the canvas, pixels
  /// How often the file asks to be played again after the first time; 0 for ever, absent when it says
  /// nothing. Known once the first frame has been read.
  [[nodiscard]] virtual std::optional<int> loopCount() const = 0;
  /// The next frame; null at the end, and where the file is damaged from there on.
  virtual const GifFrame* next() = 0;
  /// Back to before the first frame.
  virtual void rewind() = 0;
};

/// Reads pictures. Any thread; blocks for the work.
class ImageDecoder {
 public:
  virtual ~ImageDecoder() = default;

  /// Recognises `bytes` as a picture without decoding its pixels, so that the memory used depends neither on
  /// the picture's size nor on its truth. An error when it is no picture that this system shows, or when it
  /// has more than `pixelLimit` pixels.
  virtual Result<ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) = 0;

  /// The same for a picture that is not in memory as a whole: `next` gives one piece after another, each good
  /// until the following call, and an empty one at the end. No more are asked for than it takes.
  virtual Result<ImageInfo> inspectPieces(FunctionRef<std::string_view()> next, std::int64_t pixelLimit) {
    // Those who have no use for pieces get the picture in one.
    std::string bytes;
    for (auto piece = next(); !piece.empty(); piece = next()) bytes += piece;
    return inspect(bytes, pixelLimit);
  }

  /// Decodes a picture, of an animated one the first frame. What a file that is cut off still shows is shown.
  /// One of more than `pixelLimit` pixels is decoded to fewer where its format can be, and refused otherwise:
  /// never are more pixels than that held. Image::animation() is left to the caller.
  virtual Result<ui::ImagePtr> decode(std::string_view bytes, std::int64_t pixelLimit) = 0;

  /// Opens a GIF; shares `bytes` for as long as the reader lives. An error when it is none, or when its
  /// canvas, or a frame before it is read, has more than `pixelLimit` pixels.
  virtual Result<std::unique_ptr<GifReader>> openGif(std::shared_ptr<const std::string> bytes,
                                                     std::int64_t pixelLimit) = 0;
};

}  // namespace VorselKelp::platform
