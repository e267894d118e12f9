#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"
#include "gif/GifManager.h"

namespace VorselKelp::gif {
namespace {

using platform::GifDisposal;
using testing_platform::HeaderImageDecoder;

constexpr int side = 99;

/// A third of the canvas, counted from the left, in one colour.
HeaderImageDecoder::Frame third(int number, std::uint8_t red, GifDisposal disposal, int delay) {
  constexpr int width = side / 3;
  return {number * width, 0,  width,    side, std::vector<std::uint8_t>(width * side),
          {{red, 0, 0}},  {}, disposal, delay};
}

/// The red of each third, a full stop for nothing.
std::string shown(const ui::ImageView& view) {
  std::string text;
  for (const std::size_t x : {0, side / 3, side * 2 / 3}) {
    const auto red = view.image.get()->pixels()[x * 4];
    text += red ? static_cast<char>('0' + red) : '.';
  }
  return text;
}

TEST(GifRoundTest, EveryRoundShowsThePartsOfItsFramesForTheSameTimes) {
  const auto screen = std::make_shared<testing_platform::SettableScreen>();
  const auto decoder = std::make_shared<HeaderImageDecoder>();
  decoder->setFrames({third(1, 1, GifDisposal::keep, 10), third(0, 2, GifDisposal::keep, 30),
                      third(2, 3, GifDisposal::background, 20), third(0, 4, GifDisposal::previous, 50)},
                     0);
  // In the larger budget all frames are kept, in the smaller one they are decoded again.
  for (const std::size_t budget : {GifManager::defaultFrameBudget, std::size_t{200'000}}) {
    GifManager manager(screen, decoder, budget);
    const auto view = std::make_shared<ui::ImageView>();
    manager.show(view, std::make_shared<ui::Image>(
                           1, 1, std::vector<std::uint8_t>(4),
                           std::make_shared<const std::string>(testing_platform::gifBeginning(side, side))));
    screen->refresh(0);
    EXPECT_EQ(view->image.get()->width(), side);
    for (int round = 0; round < 3; ++round) {
      std::vector<std::string> frames;
      for (int tenth = 0; tenth < 11; ++tenth) {
        screen->refresh(round * 1.1 + tenth * 0.1 + 0.05);
        frames.push_back(shown(*view));
      }
      EXPECT_EQ(frames, (std::vector<std::string>{".1.", "21.", "21.", "21.", "213", "213", "41.", "41.",
                                                  "41.", "41.", "41."}))
          << round << " " << budget;
    }
  }
}

}  // namespace
}  // namespace VorselKelp::gif
