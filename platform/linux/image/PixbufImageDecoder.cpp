#include "VorselKelpLinux/PixbufImageDecoder.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "image/PixbufLibrary.h"

namespace VorselKelp::linux_platform {
namespace {

constexpr std::size_t pieceSize = std::size_t{16} << 10;

/// One picture being looked at. The loader is asked for a picture of no size, which makes it stop before it
/// allocates pixels.
class Inspection {
 public:
  explicit Inspection(const PixbufLibrary& library) : library_(library), loader_(library.loaderNew()) {
    library_.signalConnect(loader_, "size-prepared", G_CALLBACK(&Inspection::onSize), this, nullptr,
                           GConnectFlags{});
  }
  ~Inspection() {
    close();
    library_.unref(loader_);
  }
  Inspection(const Inspection&) = delete;
  Inspection& operator=(const Inspection&) = delete;

  Result<platform::ImageInfo> run(std::string_view bytes, std::int64_t pixelLimit) {
    bool fed = true;
    for (std::size_t at = 0; fed && !known_ && at < bytes.size(); at += pieceSize) {
      const auto piece = bytes.substr(at, pieceSize);
      GError* error = nullptr;
      fed =
          library_.loaderWrite(loader_, reinterpret_cast<const guchar*>(piece.data()), piece.size(), &error);
      note(error);
    }
    // A small picture is kept back until the loader is closed.
    if (fed && !known_) close();
    if (!known_) return Error{problem_.empty() ? "not a picture" : problem_};
    if (width_ <= 0 || height_ <= 0) return Error{"a picture without a size"};
    if (std::int64_t{width_} * height_ > pixelLimit) {
      return Error{"a picture of " + std::to_string(width_) + " by " + std::to_string(height_) +
                   " pixels is too large"};
    }
    return platform::ImageInfo{width_, height_, extension()};
  }

 private:
  static void onSize(GdkPixbufLoader* loader, int width, int height, void* self) {
    auto& inspection = *static_cast<Inspection*>(self);
    inspection.width_ = width;
    inspection.height_ = height;
    inspection.known_ = true;
    inspection.library_.loaderSetSize(loader, 0, 0);
  }

  void note(GError* error) {
    if (!error) return;
    if (problem_.empty()) problem_ = error->message;
    library_.errorFree(error);
  }

  void close() {
    if (std::exchange(closed_, true)) return;
    GError* error = nullptr;
    library_.loaderClose(loader_, &error);
    note(error);
  }

  std::string extension() {
    GdkPixbufFormat* format = library_.loaderFormat(loader_);
    gchar** extensions = format ? library_.formatExtensions(format) : nullptr;
    std::string first = extensions && extensions[0] ? extensions[0] : "";
    library_.textsFree(extensions);
    return first == "jpeg" ? "jpg" : first;
  }

  const PixbufLibrary& library_;
  GdkPixbufLoader* loader_;
  bool known_ = false;
  bool closed_ = false;
  int width_ = 0;
  int height_ = 0;
  std::string problem_;
};

class PixbufImageDecoder final : public platform::ImageDecoder {
 public:
  explicit PixbufImageDecoder(ImageDecoderOptions options) : options_(std::move(options)) {}

  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) override {
    std::call_once(once_, [this] { library_ = std::make_unique<PixbufLibrary>(options_.libraryName); });
    if (!library_->error().empty()) return Error{"gdk-pixbuf can't be loaded: " + library_->error()};
    return Inspection(*library_).run(bytes, pixelLimit);
  }

 private:
  const ImageDecoderOptions options_;
  std::once_flag once_;
  std::unique_ptr<PixbufLibrary> library_;
};

}  // namespace

std::shared_ptr<platform::ImageDecoder> makeImageDecoder(ImageDecoderOptions options) {
  return std::make_shared<PixbufImageDecoder>(std::move(options));
}

}  // namespace VorselKelp::linux_platform
