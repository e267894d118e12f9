#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::testing_platform {

/// Recognises PNG, JPEG and GIF by their first bytes and reads the size that their headers give. It never
/// looks at the pixels, so a picture that is cut off behind its header counts as one: decoded, every picture
/// is transparent. GIF frames are those that the test gives. Thread-safe.
class VORSELKELP_API HeaderImageDecoder final : public platform::ImageDecoder {
 public:
  Result<platform::ImageInfo> inspect(std::string_view bytes, std::int64_t pixelLimit) override;
  Result<ui::ImagePtr> decode(std::string_view bytes, std::int64_t pixelLimit) override;
  Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const std::string> bytes,
                                                       std::int64_t pixelLimit) override;

  struct Frame {
    int left = 0, top = 0, width = 0, height = 0;
    std::vector<std::uint8_t> indices;
    std::vector<platform::GifColor> palette;
    std::optional<std::uint8_t> transparent;
    platform::GifDisposal disposal = platform::GifDisposal::unspecified;
    int delay = 0;
  };
  /// What a GIF opened from now on holds; the canvas is the one of its header.
  void setFrames(std::vector<Frame> frames, std::optional<int> loopCount);

 private:
  std::mutex mutex_;
  std::vector<Frame> frames_;
  std::optional<int> loopCount_;
};

/// The beginning of a picture, enough for HeaderImageDecoder and for nobody else.
VORSELKELP_API std::string pngBeginning(unsigned width, unsigned height);
VORSELKELP_API std::string jpegBeginning(unsigned width, unsigned height);
VORSELKELP_API std::string gifBeginning(unsigned width, unsigned height);

}  // namespace VorselKelp::testing_platform
