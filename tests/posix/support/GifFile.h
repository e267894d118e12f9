#pragma once

#include <gif_lib.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VorselKelp::testing_support {

struct GifFileFrame {
  int left = 0, top = 0, width = 0, height = 0;
  std::vector<std::uint8_t> indices;  ///< rows from the top
  bool interlaced = false;
  std::vector<GifColorType> palette;  ///< empty for the file's
  int transparent = NO_TRANSPARENT_COLOR;
  int disposal = DISPOSAL_UNSPECIFIED;
  int delay = 0;
};

/// The bytes of a GIF, compressed as giflib does it.
inline std::string gifFile(int width, int height, const std::vector<GifColorType>& palette,
                           const std::vector<GifFileFrame>& frames, std::optional<int> loops = {}) {
  using Map = std::unique_ptr<ColorMapObject, decltype(&GifFreeMapObject)>;
  const auto map = [](const std::vector<GifColorType>& colors) {
    return Map(colors.empty() ? nullptr : GifMakeMapObject(static_cast<int>(colors.size()), colors.data()),
               &GifFreeMapObject);
  };
  std::string bytes;
  const auto append = [](GifFileType* file, const GifByteType* piece, int size) {
    static_cast<std::string*>(file->UserData)
        ->append(reinterpret_cast<const char*>(piece), static_cast<std::size_t>(size));
    return size;
  };
  GifFileType* file = EGifOpen(&bytes, append, nullptr);
  EGifSetGifVersion(file, true);
  EGifPutScreenDesc(file, width, height, 8, 0, map(palette).get());
  if (loops) {
    const std::array<std::uint8_t, 3> block{1, static_cast<std::uint8_t>(*loops & 0xff),
                                            static_cast<std::uint8_t>(*loops >> 8)};
    EGifPutExtensionLeader(file, APPLICATION_EXT_FUNC_CODE);
    EGifPutExtensionBlock(file, 11, "NETSCAPE2.0");
    EGifPutExtensionBlock(file, 3, block.data());
    EGifPutExtensionTrailer(file);
  }
  for (const auto& frame : frames) {
    const GraphicsControlBlock control{frame.disposal, false, frame.delay, frame.transparent};
    std::array<GifByteType, 4> extension{};
    EGifGCBToExtension(&control, extension.data());
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension.data());
    EGifPutImageDesc(file, frame.left, frame.top, frame.width, frame.height, frame.interlaced,
                     map(frame.palette).get());
    std::vector<int> order;
    for (const auto [first, step] : {std::array{0, 8}, {4, 8}, {2, 4}, {1, 2}}) {
      for (int row = first; row < frame.height; row += step) order.push_back(row);
    }
    for (int i = 0; i < frame.height; ++i) {
      const auto row = static_cast<std::size_t>(frame.interlaced ? order[static_cast<std::size_t>(i)] : i);
      auto pixels = frame.indices;
      EGifPutLine(file, &pixels[row * static_cast<std::size_t>(frame.width)], frame.width);
    }
  }
  EGifCloseFile(file, nullptr);
  return bytes;
}

}  // namespace VorselKelp::testing_support
