// Pictures that say to be GIF files: the real decoder, the still, and the animation in its view with a small
// budget.

#include <memory>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpTesting/MemoryPlatform.h"
#include "gif/FrameSequence.h"
#include "gif/GifManager.h"
#include "gif/ImageLoading.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

/// Larger canvases are left to the tests: filling them takes all the time, and nothing else happens in them.
constexpr int largestCanvas = 128 * 128;
constexpr std::size_t budget = std::size_t{256} << 10;
constexpr int mostFrames = 64;

platform::ImageDecoder& decoder() {
  static const auto instance = posix::makeImageDecoder();
  return *instance;
}

void checkPixels(const ui::Image& image) {
  FUZZ_EXPECT(image.width() > 0 && image.height() > 0);
  FUZZ_EXPECT(image.pixels().size() ==
              static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height()) * 4);
}

/// How many frames there are, each within its bounds. The second time they are the same.
int readFrames(platform::GifReader& reader) {
  int count = 0;
  while (const auto* frame = reader.next()) {
    FUZZ_EXPECT(frame->width >= 0 && frame->height >= 0 && frame->delay >= 0);
    FUZZ_EXPECT(frame->indices.size() ==
                static_cast<std::size_t>(frame->width) * static_cast<std::size_t>(frame->height));
    FUZZ_EXPECT(frame->indices.size() <= largestCanvas && frame->palette.size() <= 256);
    if (++count == mostFrames) break;
  }
  FUZZ_EXPECT(count == mostFrames || !reader.next());
  return count;
}

void checkSequence(const std::shared_ptr<const std::string>& bytes) {
  const auto frames = gif::FrameSequence::open(decoder(), bytes, budget);
  if (!frames) return;
  for (int i = 0; i < mostFrames && frames->advance(); ++i) {
    FUZZ_EXPECT(frames->delay() >= 0.02 && frames->delay() <= 655.35);
    checkPixels(*frames->image());
    FUZZ_EXPECT(frames->image() == frames->image());
    FUZZ_EXPECT(frames->image()->pixels().size() <= budget);
  }
}

void play(const ui::ImagePtr& image) {
  const auto screen = std::make_shared<testing_platform::SettableScreen>();
  gif::GifManager manager(
      screen, std::shared_ptr<platform::ImageDecoder>(std::shared_ptr<void>(), &decoder()), budget);
  const auto view = std::make_shared<ui::ImageView>();
  manager.show(view, image);
  for (int i = 0; i < 24; ++i) {
    screen->refresh(i * 0.07);
    if (i == 6) manager.stop(*view);
    if (i == 8) manager.resume(*view);
    FUZZ_EXPECT(view->image.get());
    checkPixels(*view->image.get());
  }
  manager.remove(*view);
  FUZZ_EXPECT(screen->runningLinks() == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::make_shared<const std::string>(fuzz::Input(data, size).all());
  if (!bytes->starts_with("GIF8")) return 0;
  auto opened = decoder().openGif(bytes, largestCanvas);
  if (!opened) {
    FUZZ_EXPECT(!opened.error().description.empty());
    return 0;
  }
  auto& reader = **opened;
  FUZZ_EXPECT(std::int64_t{reader.width()} * reader.height() <= largestCanvas);
  const int count = readFrames(reader);
  reader.rewind();
  FUZZ_EXPECT(readFrames(reader) == count);
  checkSequence(bytes);
  const auto image = gif::decodeImage(decoder(), *bytes);
  if (!image) return 0;
  checkPixels(**image);
  FUZZ_EXPECT((*image)->width() == reader.width() && (*image)->height() == reader.height());
  if ((*image)->animation()) FUZZ_EXPECT(*(*image)->animation() == *bytes);
  play(*image);
  return 0;
}
