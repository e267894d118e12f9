#include "gif/Compositor.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace VorselKelp::gif {
namespace {

using platform::GifDisposal;
using platform::GifFrame;

const std::vector<platform::GifColor> palette{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}};

/// A canvas whose pixels read as digits: the red of what is shown, a full stop for nothing.
class Canvas {
 public:
  Canvas(int width, int height, int step = 1)
      : compositor_(width, height, step),
        pixels_(static_cast<std::size_t>(compositor_.width() * compositor_.height()) * 4) {}

  std::string draw(int left, int top, int width, const std::vector<std::uint8_t>& indices,
                   GifDisposal disposal = GifDisposal::unspecified,
                   std::optional<std::uint8_t> transparent = std::nullopt) {
    const auto height = static_cast<int>(indices.size()) / width;
    compositor_.draw(pixels_, {left, top, width, height, indices, palette, transparent, disposal, 0});
    std::string text;
    for (std::size_t at = 0; at < pixels_.size(); at += 4) {
      if (at > 0 && at / 4 % static_cast<std::size_t>(compositor_.width()) == 0) text += '/';
      EXPECT_EQ(pixels_[at + 3], pixels_[at] ? 255 : 0);
      text += pixels_[at] ? static_cast<char>('0' + pixels_[at]) : '.';
    }
    return text;
  }

  Compositor compositor_;
  std::vector<std::uint8_t> pixels_;
};

TEST(CompositorTest, FramesAreDisposedOfAsTheyAsk) {
  Canvas canvas(3, 2);
  EXPECT_EQ(canvas.draw(0, 0, 3, {0, 0, 0, 0, 0, 0}), "111/111");
  EXPECT_EQ(canvas.draw(0, 0, 2, {1, 1}, GifDisposal::keep), "221/111");
  EXPECT_EQ(canvas.draw(1, 0, 2, {2, 2, 2, 2}, GifDisposal::previous), "233/133");
  EXPECT_EQ(canvas.draw(2, 0, 1, {3}, GifDisposal::previous), "224/111") << "restored before it is drawn";
  EXPECT_EQ(canvas.draw(0, 1, 1, {1}, GifDisposal::background), "221/211");
  EXPECT_EQ(canvas.draw(1, 1, 1, {1}), "221/.21") << "cleared to nothing";
  canvas.compositor_.restart();
  std::fill(canvas.pixels_.begin(), canvas.pixels_.end(), std::uint8_t{0});
  EXPECT_EQ(canvas.draw(0, 0, 1, {0}, GifDisposal::previous), "1../...");
  EXPECT_EQ(canvas.draw(2, 1, 1, {0}), ".../..1");
}

TEST(CompositorTest, TransparentAndUnknownIndicesShowWhatIsBelow) {
  Canvas canvas(4, 1);
  EXPECT_EQ(canvas.draw(0, 0, 4, {0, 1, 4, 255}), "12..");
  EXPECT_EQ(canvas.draw(0, 0, 4, {3, 2, 3, 2}, GifDisposal::keep, 2), "424.");
  EXPECT_EQ(canvas.draw(0, 0, 4, {0, 0, 0, 0}, GifDisposal::keep, 200), "1111");
}

TEST(CompositorTest, FramesAreCutToTheCanvas) {
  for (const auto disposal : {GifDisposal::background, GifDisposal::previous}) {
    Canvas canvas(3, 3);
    EXPECT_EQ(canvas.draw(-1, -1, 3, {0, 0, 0, 0, 1, 2, 0, 3, 0}, disposal), "23./41./...");
    EXPECT_EQ(canvas.draw(2, 2, 2, {0, 1, 2, 3}, disposal), ".../.../..1") << "disposed of inside as well";
    EXPECT_EQ(canvas.draw(3, 0, 1, {0}, disposal), ".../.../...");
    EXPECT_EQ(canvas.draw(-65'535, 0, 2, {0, 0}, disposal), ".../.../...");
    EXPECT_EQ(canvas.draw(-1, 1, 5, {0, 1, 2, 3, 0}, disposal), ".../234/...");
    canvas.compositor_.draw(canvas.pixels_, {0, 0, 0, 65'535, {}, palette, {}, disposal, 0});
    EXPECT_EQ(canvas.draw(0, 0, 1, {0}, disposal), "1../.../...");
  }
}

// What is drawn in fewer pixels is the same picture with pixels left out, whatever the frames are.
TEST(CompositorTest, EveryStepShowsTheSamePicture) {
  std::mt19937 random(3);
  const int width = 13;
  const int height = 11;
  const auto number = [&random](int below) {
    return static_cast<int>(random() % static_cast<unsigned>(below));
  };
  for (int round = 0; round < 60; ++round) {
    Canvas whole(width, height);
    std::vector<Canvas> reduced{{width, height, 2}, {width, height, 3}, {width, height, 20}};
    for (int frame = 0; frame < 12; ++frame) {
      const int left = number(18) - 4;
      const int top = number(18) - 4;
      const int frameWidth = number(12) + 1;
      std::vector<std::uint8_t> indices(static_cast<std::size_t>(frameWidth * (number(12) + 1)));
      for (auto& index : indices) index = static_cast<std::uint8_t>(number(6));
      const auto disposal = static_cast<GifDisposal>(number(4));
      (void)whole.draw(left, top, frameWidth, indices, disposal, 1);
      for (auto& canvas : reduced) (void)canvas.draw(left, top, frameWidth, indices, disposal, 1);
      for (const int step : {2, 3, 20}) {
        const Canvas& canvas = reduced[step == 20 ? 2 : static_cast<std::size_t>(step) - 2];
        ASSERT_EQ(canvas.compositor_.width(), (width + step - 1) / step);
        for (int y = 0; y < canvas.compositor_.height(); ++y) {
          for (int x = 0; x < canvas.compositor_.width(); ++x) {
            ASSERT_EQ(canvas.pixels_[static_cast<std::size_t>(y * canvas.compositor_.width() + x) * 4],
                      whole.pixels_[static_cast<std::size_t>(y * step * width + x * step) * 4]);
          }
        }
      }
    }
  }
}

}  // namespace
}  // namespace VorselKelp::gif
