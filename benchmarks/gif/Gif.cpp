#include <benchmark/benchmark.h>
#include <gif_lib.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpTesting/MemoryPlatform.h"
#include "gif/Figures.h"
#include "gif/FlatGif.h"
#include "gif/FrameSequence.h"
#include "gif/GifManager.h"
#include "gif/ImageLoading.h"

namespace VorselKelp::benchmarks {
namespace {

void composedFrames(benchmark::State& state) {
  const auto bytes = std::make_shared<const std::string>(flatGif());
  const auto decoder = posix::makeImageDecoder();
  const auto frames = gif::FrameSequence::open(*decoder, bytes, gif::GifManager::defaultFrameBudget);
  for (auto _ : state) {
    if (!frames->advance()) std::abort();
    benchmark::DoNotOptimize(frames->image()->pixels().data());
  }
}

/// giflib line by line into one canvas, with nothing but a look at the palette.
class BareGif {
 public:
  explicit BareGif(const std::string& bytes) : bytes_(bytes) { open(); }
  ~BareGif() { DGifCloseFile(file_, nullptr); }
  BareGif(const BareGif&) = delete;
  BareGif& operator=(const BareGif&) = delete;

  void compose() {
    for (GifRecordType type{}; DGifGetRecordType(file_, &type) == GIF_OK;) {
      if (type == IMAGE_DESC_RECORD_TYPE) return composeFrame();
      if (type == TERMINATE_RECORD_TYPE) {
        DGifCloseFile(file_, nullptr);
        open();
      } else {
        int code = 0;
        GifByteType* block = nullptr;
        DGifGetExtension(file_, &code, &block);
        while (block) DGifGetExtensionNext(file_, &block);
      }
    }
    std::abort();
  }
  [[nodiscard]] const GifByteType* pixels() const { return canvas_.data(); }

 private:
  void open() {
    at_ = 0;
    file_ = DGifOpen(this, read, nullptr);
    if (!file_) std::abort();
  }

  void composeFrame() {
    DGifGetImageHeader(file_);
    GifByteType* pixel = canvas_.data();
    for (int y = 0; y < gifHeight; ++y) {
      if (DGifGetLine(file_, row_.data(), gifWidth) != GIF_OK) std::abort();
      for (const GifPixelType index : row_) {
        const GifColorType& color = file_->SColorMap->Colors[index];
        *pixel++ = color.Red;
        *pixel++ = color.Green;
        *pixel++ = color.Blue;
        *pixel++ = 255;
      }
    }
  }

  static int read(GifFileType* file, GifByteType* buffer, int wanted) {
    auto& self = *static_cast<BareGif*>(file->UserData);
    const auto size = std::min(static_cast<std::size_t>(wanted), self.bytes_.size() - self.at_);
    std::memcpy(buffer, self.bytes_.data() + self.at_, size);
    self.at_ += size;
    return static_cast<int>(size);
  }

  const std::string& bytes_;
  std::size_t at_ = 0;
  GifFileType* file_ = nullptr;
  std::vector<GifPixelType> row_ = std::vector<GifPixelType>(gifWidth);
  std::vector<GifByteType> canvas_ = std::vector<GifByteType>(std::size_t{4} * gifWidth * gifHeight);
};

void bareFrames(benchmark::State& state) {
  const std::string bytes = flatGif();
  BareGif gif(bytes);
  for (auto _ : state) {
    gif.compose();
    benchmark::DoNotOptimize(gif.pixels());
  }
}

BENCHMARK(composedFrames)->Name("GIF 400 x 300, 200 frames: time per composed flat frame");
BENCHMARK(bareFrames)->Name("GIF, bare giflib");

std::size_t heapBytes() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

}  // namespace

Line gifMemory() {
  const auto decoder = posix::makeImageDecoder();
  const auto screen = std::make_shared<testing_platform::SettableScreen>();
  const auto view = std::make_shared<ui::ImageView>();
  gif::GifManager manager(screen, decoder);
  {
    auto image = gif::decodeImage(*decoder, flatGif());
    if (!image || !(*image)->animation()) std::abort();
    manager.show(view, *std::move(image));
  }
  const auto given = view->image.get()->pixels().size();
  const std::size_t before = heapBytes() - given;
  std::size_t most = 0;
  for (int refresh = 0; refresh < gifFrames * 3; ++refresh) {
    screen->refresh(0.0501 * refresh);
    most = std::max(most, heapBytes() - before);
  }
  if (!manager.isAnimating(*view)) std::abort();
  return {"the same GIF: bytes held", "MB", static_cast<double>(most) / (1 << 20), 0, 4,
          Line::Goal::difference};
}

}  // namespace VorselKelp::benchmarks
