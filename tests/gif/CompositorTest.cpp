#include "gif/Compositor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace VorselKelp::gif {
namespace {

using platform::GifDisposal;
using platform::GifFrame;

const std::vector<platform::GifColor> palette{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}};

/// A canvas whose pixels read as digits: the red of what is shown, a full stop for nothing.
class Canvas {
 public:
  Canvas(int width, int height) : Canvas(width, height, width, height) {}
  Canvas(int width, int height, int drawnWidth, int drawnHeight)
      : compositor_(width, height, drawnWidth, drawnHeight),
        pixels_(static_cast<std::size_t>(compositor_.width() * compositor_.height()) * 4) {}

  std::string draw(int left, int top, int width, const std::vector<std::uint8_t>& indices,
                   GifDisposal disposal = GifDisposal::unspecified,
                   std::optional<std::uint8_t> transparent = std::nullopt) {
    const auto height = static_cast<int>(indices.size()) / width;
    compositor_.draw(pixels_, {left, top, width, height, indices, palette, transparent, disposal, 0});
    std::string text;
    for (std::size_t at = 0; at < pixels_.size(); at += 4) {
      if (at > 0 && at / 4 % static_cast<std::size_t>(compositor_.width()) == 0) text += '/';
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
  EXPECT_EQ(canvas.draw(0, 0, 4, {3, 4, 3, 4}), "4141") << "one more than there are colours";
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

TEST(CompositorTest, FewerPixelsShowTheAverageOfTheirAreas) {
  std::mt19937 random(3);
  std::vector<platform::GifColor> colors(256);
  for (int i = 0; i < 256; ++i) colors[static_cast<std::size_t>(i)].red = static_cast<std::uint8_t>(i);
  for (const auto& [width, drawnWidth] : {std::pair{13, 12}, {13, 7}, {12, 6}, {2, 1}, {1, 1}, {1000, 501}}) {
    const int height = 3, drawnHeight = 2;
    Compositor compositor(width, height, drawnWidth, drawnHeight);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(drawnWidth * drawnHeight) * 4), indices;
    for (int i = 0; i < width * height; ++i) indices.push_back(static_cast<std::uint8_t>(random()));
    compositor.draw(pixels, {0, 0, width, height, indices, colors, {}, {}, 0});
    const auto overlap = [](int a, int file, int b, int drawn) {
      const double from = std::max(a * 1.0, b * 1.0 * file / drawn);
      return std::max(0.0, std::min(a + 1.0, (b + 1.0) * file / drawn) - from);
    };
    for (int i = 0; i < drawnWidth * drawnHeight; ++i) {
      double sum = 0, area = 0;
      for (int j = 0; j < width * height; ++j) {
        const double share = overlap(j % width, width, i % drawnWidth, drawnWidth) *
                             overlap(j / width, height, i / drawnWidth, drawnHeight);
        sum += share * indices[static_cast<std::size_t>(j)];
        area += share;
      }
      EXPECT_NEAR(pixels[static_cast<std::size_t>(i) * 4], sum / area, 0.51) << width;
      EXPECT_EQ(pixels[static_cast<std::size_t>(i) * 4 + 3], 255);
    }
  }
}

TEST(CompositorTest, FewerPixelsMixWithWhatIsBelow) {
  Canvas canvas(4, 2, 2, 1);
  EXPECT_EQ(canvas.draw(0, 0, 4, {0, 0, 2, 2, 0, 0, 2, 2}), "13");
  EXPECT_EQ(canvas.draw(1, 0, 2, {2, 0, 2, 0}, GifDisposal::previous), "22") << "half of each";
  EXPECT_EQ(canvas.draw(3, 0, 1, {3, 3}, GifDisposal::previous, 3), "13") << "restored, and nothing drawn";
  EXPECT_EQ(canvas.draw(1, 0, 1, {0, 0}, GifDisposal::background), "13");
  (void)canvas.draw(0, 0, 1, {3, 3}, GifDisposal::keep, 3);
  EXPECT_EQ(canvas.pixels_[3], 127) << "half of it was cleared";
  EXPECT_EQ(canvas.pixels_[7], 255);
  EXPECT_EQ(canvas.draw(-5, -5, 20, std::vector<std::uint8_t>(400, 1)), "22");
  EXPECT_EQ(canvas.pixels_[3], 255);
}

}  // namespace
}  // namespace VorselKelp::gif
