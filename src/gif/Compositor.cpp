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

void put(std::uint8_t* target, std::uint32_t word) {
  std::memcpy(target, &word, pixelSize);
}

}  // namespace

/// What the pixels of an area show together; what is transparent shows nothing.
struct Compositor::Blend {
  std::array<std::int64_t, 3> sums{};
  std::int64_t weight = 0;

  void add(std::uint32_t word, std::int64_t share) {
    const auto parts = std::bit_cast<std::array<std::uint8_t, pixelSize>>(word);
    if (parts[3] == 0) return;
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += parts[i] * share;
    weight += share;
  }
  /// Puts it over what a pixel shows, of which it covers `weight` parts in `whole`.
  void over(std::uint8_t* pixel, std::int64_t whole) const {
    if (weight == 0) return;
    const double below = pixel[3] / 255.0 * static_cast<double>(whole - weight);
    const double all = static_cast<double>(weight) + below;
    for (std::size_t i = 0; i < sums.size(); ++i)
      pixel[i] = static_cast<std::uint8_t>((static_cast<double>(sums[i]) + pixel[i] * below) / all + 0.5);
    pixel[3] = static_cast<std::uint8_t>(all / static_cast<double>(whole) * 255 + 0.5);
  }
};

Compositor::Compositor(int width, int height, int drawnWidth, int drawnHeight)
    : fileWidth_(width),
      fileHeight_(height),
      width_(drawnWidth),
      height_(drawnHeight),
      columns_(width, drawnWidth),
      rows_(height, drawnHeight) {
  if (!isReduced()) return;
  for (int x = 0; x < width_; ++x) columnShares_.push_back(columns_.shareOf(x));
}

std::uint8_t* Compositor::at(std::span<std::uint8_t> canvas, int x, int y) const {
  return &canvas[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                  static_cast<std::size_t>(x)) *
                 pixelSize];
}

void Compositor::draw(std::span<std::uint8_t> canvas, const GifFrame& frame) {
  dispose(canvas);
  fileArea_ = areaOf(frame);
  area_ = drawnAreaOf(fileArea_);
  disposal_ = frame.disposal;
  if (area_.empty()) return;
  if (disposal_ == GifDisposal::previous) save(canvas);
  expandPalette(frame);
  isReduced() ? paintReduced(canvas, frame) : paint(canvas, frame);
}

Compositor::Area Compositor::areaOf(const GifFrame& frame) const {
  if (frame.width <= 0 || frame.height <= 0) return {};
  const auto rows = static_cast<std::int64_t>(frame.indices.size() / static_cast<std::size_t>(frame.width));
  const auto bottom = std::int64_t{frame.top} + std::min<std::int64_t>(frame.height, rows);
  const auto within = [](std::int64_t at, int end) {
    return static_cast<int>(std::clamp<std::int64_t>(at, 0, end));
  };
  return {within(frame.left, fileWidth_), within(frame.top, fileHeight_),
          within(std::int64_t{frame.left} + frame.width, fileWidth_), within(bottom, fileHeight_)};
}

Compositor::Area Compositor::drawnAreaOf(const Area& file) const {
  if (file.empty()) return {};
  return {columns_.firstDrawn(file.left), rows_.firstDrawn(file.top), columns_.endDrawn(file.right),
          rows_.endDrawn(file.bottom)};
}

void Compositor::dispose(std::span<std::uint8_t> canvas) {
  if (area_.empty()) return;
  if (disposal_ == GifDisposal::background) clear(canvas);
  if (disposal_ == GifDisposal::previous) restore(canvas);
}

void Compositor::clear(std::span<std::uint8_t> canvas) const {
  const auto whole = columns_.total() * rows_.total();
  const auto rowSize = static_cast<std::size_t>(area_.right - area_.left) * pixelSize;
  for (int y = area_.top; y < area_.bottom; ++y) {
    std::uint8_t* pixel = at(canvas, area_.left, y);
    if (!isReduced()) {
      std::memset(pixel, 0, rowSize);
      continue;
    }
    const auto height = rows_.shareOf(y).within(fileArea_.top, fileArea_.bottom);
    for (int x = area_.left; x < area_.right; ++x, pixel += pixelSize) {
      const auto& columns = columnShares_[static_cast<std::size_t>(x)];
      const auto kept = whole - height * columns.within(fileArea_.left, fileArea_.right);
      pixel[3] = static_cast<std::uint8_t>(pixel[3] * kept / whole);
      if (pixel[3] == 0) put(pixel, 0);
    }
  }
}

void Compositor::restore(std::span<std::uint8_t> canvas) const {
  const auto rowSize = static_cast<std::size_t>(area_.right - area_.left) * pixelSize;
  const std::uint8_t* saved = saved_.data();
  for (int y = area_.top; y < area_.bottom; ++y, saved += rowSize)
    std::memcpy(at(canvas, area_.left, y), saved, rowSize);
}

void Compositor::save(std::span<std::uint8_t> canvas) {
  const auto rowSize = static_cast<std::size_t>(area_.right - area_.left) * pixelSize;
  saved_.resize(rowSize * static_cast<std::size_t>(area_.bottom - area_.top));
  std::uint8_t* saved = saved_.data();
  for (int y = area_.top; y < area_.bottom; ++y, saved += rowSize) {
    std::memcpy(saved, at(canvas, area_.left, y), rowSize);
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
  for (int y = area_.top; y < area_.bottom; ++y) {
    const auto from =
        static_cast<std::size_t>(std::int64_t{y} - frame.top) * static_cast<std::size_t>(frame.width) +
        static_cast<std::size_t>(std::int64_t{area_.left} - frame.left);
    const std::uint8_t* index = frame.indices.data() + from;
    auto* target = at(canvas, area_.left, y);
    if (isOpaque({index, count}, frame)) {
      for (std::size_t x = 0; x < count; ++x) put(target + x * pixelSize, words_[index[x]]);
      continue;
    }
    for (std::size_t x = 0; x < count; ++x) {
      const std::uint32_t word = words_[index[x]];
      if (word != 0) put(target + x * pixelSize, word);
    }
  }
}

void Compositor::paintReduced(std::span<std::uint8_t> canvas, const GifFrame& frame) const {
  const auto whole = columns_.total() * rows_.total();
  for (int y = area_.top; y < area_.bottom; ++y) {
    const auto rows = rows_.shareOf(y);
    for (int x = area_.left; x < area_.right; ++x) {
      Blend blend;
      for (int i = 0; i < 3; ++i) {
        const int row = rows.first + i;
        const int height = rows.weights[static_cast<std::size_t>(i)];
        if (height == 0 || row < fileArea_.top || row >= fileArea_.bottom) continue;
        addRow(blend, frame, row, height, columnShares_[static_cast<std::size_t>(x)]);
      }
      blend.over(at(canvas, x, y), whole);
    }
  }
}

void Compositor::addRow(Blend& blend, const GifFrame& frame, int row, int height,
                        const AxisScale::Share& columns) const {
  const auto line = (std::int64_t{row} - frame.top) * frame.width - frame.left;
  for (int i = 0; i < 3; ++i) {
    const int column = columns.first + i;
    const int width = columns.weights[static_cast<std::size_t>(i)];
    if (width == 0 || column < fileArea_.left || column >= fileArea_.right) continue;
    blend.add(words_[frame.indices[static_cast<std::size_t>(line + column)]], std::int64_t{width} * height);
  }
}

}  // namespace VorselKelp::gif
