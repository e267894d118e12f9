#include "gif/FlatGif.h"

#include <gif_lib.h>

#include <array>
#include <vector>

namespace VorselKelp::benchmarks {
namespace {

int append(GifFileType* file, const GifByteType* bytes, int size) {
  static_cast<std::string*>(file->UserData)
      ->append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  return size;
}

}  // namespace

std::string flatGif() {
  std::array<GifColorType, 64> colors{};
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const auto shade = static_cast<GifByteType>(i * 4);
    colors[i] = {shade, static_cast<GifByteType>(255 - shade), 128};
  }
  ColorMapObject* const palette = GifMakeMapObject(static_cast<int>(colors.size()), colors.data());
  std::string bytes;
  GifFileType* const file = EGifOpen(&bytes, append, nullptr);
  EGifSetGifVersion(file, true);
  EGifPutScreenDesc(file, gifWidth, gifHeight, 8, 0, palette);
  EGifPutExtensionLeader(file, APPLICATION_EXT_FUNC_CODE);
  EGifPutExtensionBlock(file, 11, "NETSCAPE2.0");
  EGifPutExtensionBlock(file, 3, "\x01\x00\x00");
  EGifPutExtensionTrailer(file);
  std::vector<GifPixelType> row(gifWidth);
  for (int frame = 0; frame < gifFrames; ++frame) {
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, "\x04\x05\x00\x00");
    EGifPutImageDesc(file, 0, 0, gifWidth, gifHeight, false, nullptr);
    for (int y = 0; y < gifHeight; ++y) {
      for (int x = 0; x < gifWidth; ++x)
        row[static_cast<std::size_t>(x)] = static_cast<GifPixelType>((x / 50 + y / 50 + frame) % 64);
      EGifPutLine(file, row.data(), gifWidth);
    }
  }
  EGifCloseFile(file, nullptr);
  GifFreeMapObject(palette);
  return bytes;
}

}  // namespace VorselKelp::benchmarks
