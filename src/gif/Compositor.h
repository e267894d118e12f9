#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "VorselKelp/platform/ImageDecoder.h"
#include "gif/AxisScale.h"

namespace VorselKelp::gif {

/// Draws the frames of one GIF, one onto the other, as pixels of an Image. What a frame leaves transparent,
/// and what it says to clear, is transparent: the format's background colour is shown by nobody.
class Compositor {
 public:
  /// The file's canvas.
  Compositor(int width, int height) : Compositor(width, height, width, height) {}
  /// The same in fewer pixels, at least half as many in each direction; each is what its area shows.
  Compositor(int width, int height, int drawnWidth, int drawnHeight);

  [[nodiscard]] int width() const { return width_; }    ///< of what is drawn
  [[nodiscard]] int height() const { return height_; }  ///< of what is drawn

  /// Takes away the frame drawn before, as that one asked to be, and draws the next. `canvas` (four bytes for
  /// each pixel) holds the picture before and the picture after.
  void draw(std::span<std::uint8_t> canvas, const platform::GifFrame& frame);

  /// Before the first frame again; the canvas is to be transparent then.
  void restart() { disposal_ = platform::GifDisposal::keep; }

 private:
  /// The ends are excluded.
  struct Area {
    int left = 0, top = 0, right = 0, bottom = 0;
    [[nodiscard]] bool empty() const { return left >= right || top >= bottom; }
  };

  [[nodiscard]] Area areaOf(const platform::GifFrame& frame) const;
  [[nodiscard]] Area drawnAreaOf(const Area& file) const;
  void expandPalette(const platform::GifFrame& frame);
  void dispose(std::span<std::uint8_t> canvas);
  void clear(std::span<std::uint8_t> canvas) const;
  void restore(std::span<std::uint8_t> canvas) const;
  void save(std::span<std::uint8_t> canvas);
  void paint(std::span<std::uint8_t> canvas, const platform::GifFrame& frame) const;
  struct Blend;
  void addRow(Blend& blend, const platform::GifFrame& frame, int row, int height,
              const AxisScale::Share& columns) const;
  void paintReduced(std::span<std::uint8_t> canvas, const platform::GifFrame& frame) const;
  [[nodiscard]] bool isReduced() const { return width_ != fileWidth_ || height_ != fileHeight_; }
  [[nodiscard]] std::uint8_t* at(std::span<std::uint8_t> canvas, int x, int y) const;
  [[nodiscard]] bool isOpaque(std::span<const std::uint8_t> row, const platform::GifFrame& frame) const;

  const int fileWidth_;
  const int fileHeight_;
  const int width_;
  const int height_;
  const AxisScale columns_;
  const AxisScale rows_;
  std::vector<AxisScale::Share> columnShares_;  ///< where it is reduced
  /// Pixels by index; zero where nothing is drawn.
  std::array<std::uint32_t, 256> words_{};
  // Of the frame drawn last.
  platform::GifDisposal disposal_ = platform::GifDisposal::keep;
  Area area_;
  Area fileArea_;                    ///< the same in the file's pixels
  std::vector<std::uint8_t> saved_;  ///< what was in the area before
};

}  // namespace VorselKelp::gif
