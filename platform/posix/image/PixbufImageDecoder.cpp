#include "VorselKelpPosix/PixbufImageDecoder.h"

#include <memory>
#include <mutex>
#include <utility>

#include "image/GifStill.h"
#include "image/GiflibReader.h"
#include "image/PixbufDecoding.h"
#include "image/PixbufInspection.h"

namespace VorselKelp::posix {
namespace {

class PixbufImageDecoder final : public platform::ImageDecoder {
 public:
  explicit PixbufImageDecoder(ImageDecoderOptions options) : options_(std::move(options)) {}

  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) override {
    return inspectPieces([&bytes] { return std::exchange(bytes, {}); }, pixelLimit);
  }

  Result<platform::ImageInfo> inspectPieces(platform::FunctionRef<std::string_view()> next,
                                            std::int64_t pixelLimit) override {
    const auto& library = pixbuf();
    if (!library.error().empty()) return missing("gdk-pixbuf", library.error());
    return PixbufInspection(library).run(next, pixelLimit);
  }

  Result<ui::ImagePtr> decode(std::string_view bytes, std::int64_t pixelLimit) override {
    // gdk-pixbuf shows nothing of a frame that is not complete, and trips over frames beside the canvas.
    if (bytes.starts_with("GIF8") && gif()->error().empty()) {
      const auto reader = posix::openGif(gif(), bytes, nullptr, pixelLimit);
      return reader ? gifStill(**reader) : reader.error();
    }
    const auto& library = pixbuf();
    if (!library.error().empty()) return missing("gdk-pixbuf", library.error());
    return PixbufDecoding(library, bytes, pixelLimit).run();
  }

  Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const std::string> bytes,
                                                       std::int64_t pixelLimit) override {
    if (!gif()->error().empty()) return missing("giflib", gif()->error());
    const std::string_view all = *bytes;
    return posix::openGif(gif(), all, std::move(bytes), pixelLimit);
  }

 private:
  const PixbufLibrary& pixbuf() {
    std::call_once(pixbufOnce_, [this] { pixbuf_ = std::make_unique<PixbufLibrary>(options_.libraryName); });
    return *pixbuf_;
  }
  const std::shared_ptr<GifLibrary>& gif() {
    std::call_once(gifOnce_, [this] { gif_ = std::make_shared<GifLibrary>(options_.gifLibraryName); });
    return gif_;
  }

  static Error missing(const char* name, const std::string& why) {
    return Error{std::string(name) + " can't be loaded: " + why};
  }

  const ImageDecoderOptions options_;
  std::once_flag pixbufOnce_;
  std::unique_ptr<PixbufLibrary> pixbuf_;
  std::once_flag gifOnce_;
  std::shared_ptr<GifLibrary> gif_;
};

}  // namespace

std::shared_ptr<platform::ImageDecoder> makeImageDecoder(ImageDecoderOptions options) {
  return std::make_shared<PixbufImageDecoder>(std::move(options));
}

}  // namespace VorselKelp::posix
