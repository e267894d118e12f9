#include "gif/Compositor.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace VorselKelp::gif {
namespace {

using platform::GifDisposal;
using platform::GifFrame;

constexpr std::size_t pixelSize = 4;

int divideUp(std::int64_t number, int by) {
  return static_cast<int>((number + by - 1) / by);
}

void put(std::uint8_t* target, std::uint32_t word) {
  std::memcpy(target, &word, pixelSize);
}

}  // namespace

Compositor::Compositor(int width, int height, int step)
    : fileWidth_(width),
      fileHeight_(height),
      step_(step),
      width_(divideUp(width, step)),
      height_(divideUp(height, step)) {}

void Compositor::draw(std::span<std::uint8_t> canvas, const GifFrame& frame) {
  dispose(canvas);
  area_ = areaOf(frame);
  disposal_ = frame.disposal;
  if (area_.empty()) return;
  if (disposal_ == GifDisposal::previous) save(canvas);
  expandPalette(frame);
  paint(canvas, frame);
}

Compositor::Area Compositor::areaOf(const GifFrame& frame) const {
  if (frame.width <= 0 || frame.height <= 0) return {};
  const auto rows = static_cast<std::int64_t>(frame.indices.size() / static_cast<std::size_t>(frame.width));
  const auto bottom = std::int64_t{frame.top} + std::min<std::int64_t>(frame.height, rows);
  const auto inside = [this](std::int64_t at, int end) {
    return divideUp(std::clamp<std::int64_t>(at, 0, end), step_);
  };
  return {inside(frame.left, fileWidth_), inside(frame.top, fileHeight_),
          inside(std::int64_t{frame.left} + frame.width, fileWidth_), inside(bottom, fileHeight_)};
}

void Compositor::dispose(std::span<std::uint8_t> canvas) {
  if (area_.empty() || (disposal_ != GifDisposal::background && disposal_ != GifDisposal::previous)) return;
  const auto rowSize = static_cast<std::size_t>(area_.right - area_.left) * pixelSize;
  const std::uint8_t* saved = saved_.data();
  for (int y = area_.top; y < area_.bottom; ++y) {
    auto* row = &canvas[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                         static_cast<std::size_t>(area_.left)) *
                        pixelSize];
    if (disposal_ == GifDisposal::background) {
      std::memset(row, 0, rowSize);
    } else {
      std::memcpy(row, saved, rowSize);
      saved += rowSize;
    }
  }
}

void Compositor::save(std::span<const std::uint8_t> canvas) {
  const auto rowSize = static_cast<std::size_t>(area_.right - area_.left) * pixelSize;
  saved_.resize(rowSize * static_cast<std::size_t>(area_.bottom - area_.top));
  std::uint8_t* saved = saved_.data();
  for (int y = area_.top; y < area_.bottom; ++y, saved += rowSize) {
    std::memcpy(saved,
                &canvas[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                         static_cast<std::size_t>(area_.left)) *
                        pixelSize],
                rowSize);
  }
}

void Compositor::expandPalette(const GifFrame& frame) {
  words_.fill(0);
  const auto count = std::min(frame.palette.size(), words_.size());
  for (std::size_t i = 0; i < count; ++i) {
    const auto& color = frame.palette[i];
    words_[i] =
        std::bit_cast<std::uint32_t>(std::array<std::uint8_t, 4>{color.red, color.green, color.blue, 255});
  }
  if (frame.transparent) words_[*frame.transparent] = 0;
}

bool Compositor::isOpaque(std::span<const std::uint8_t> row, const GifFrame& frame) const {
  if (frame.transparent && std::memchr(row.data(), *frame.transparent, row.size())) return false;
  if (frame.palette.size() >= words_.size()) return true;
  std::uint8_t highest = 0;
  for (const std::uint8_t index : row) highest = std::max(highest, index);
  return highest < frame.palette.size();
}

void Compositor::paint(std::span<std::uint8_t> canvas, const GifFrame& frame) const {
  const auto count = static_cast<std::size_t>(area_.right - area_.left);
  const auto step = static_cast<std::size_t>(step_);
  for (int y = area_.top; y < area_.bottom; ++y) {
    const auto from = static_cast<std::size_t>(std::int64_t{y} * step_ - frame.top) *
                          static_cast<std::size_t>(frame.width) +
                      static_cast<std::size_t>(std::int64_t{area_.left} * step_ - frame.left);
    const std::uint8_t* index = frame.indices.data() + from;
    auto* target = canvas.data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                    static_cast<std::size_t>(area_.left)) *
                                       pixelSize;
    if (step == 1 && isOpaque({index, count}, frame)) {
      for (std::size_t x = 0; x < count; ++x) put(target + x * pixelSize, words_[index[x]]);
      continue;
    }
    for (std::size_t x = 0; x < count; ++x) {
      const std::uint32_t word = words_[index[x * step]];
      if (word != 0) put(target + x * pixelSize, word);
    }
  }
}

}  // namespace VorselKelp::gif
