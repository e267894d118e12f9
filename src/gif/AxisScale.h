#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace VorselKelp::gif {

/// How the pixels of a file become fewer along one axis: by their areas. At most half of them go.
class AxisScale {
 public:
  /// Of the file's pixels one behind the other, how much each has of a drawn one; together total().
  struct Share {
    int first = 0;
    std::array<int, 3> weights{};

    /// How much of it lies between `begin` and `end`.
    [[nodiscard]] std::int64_t within(int begin, int end) const {
      std::int64_t sum = 0;
      for (int i = 0; i < 3; ++i) {
        if (first + i >= begin && first + i < end) sum += weights[static_cast<std::size_t>(i)];
      }
      return sum;
    }
  };

  AxisScale(int file, int drawn) : file_(file), drawn_(drawn) {}

  [[nodiscard]] std::int64_t total() const { return file_; }
  [[nodiscard]] Share shareOf(int drawn) const {
    const std::int64_t begin = drawn * file_;
    Share share{static_cast<int>(begin / drawn_), {}};
    for (int i = 0; i < 3; ++i) {
      const std::int64_t from = (share.first + std::int64_t{i}) * drawn_;
      const auto common = std::min(from + drawn_, begin + file_) - std::max(from, begin);
      share.weights[static_cast<std::size_t>(i)] = static_cast<int>(std::max<std::int64_t>(0, common));
    }
    return share;
  }
  // Of the file's pixels from `begin` to `end`, which lie inside, the drawn ones that have a share of them.
  [[nodiscard]] int firstDrawn(std::int64_t begin) const { return static_cast<int>(begin * drawn_ / file_); }
  [[nodiscard]] int endDrawn(std::int64_t end) const {
    return static_cast<int>((end * drawn_ + file_ - 1) / file_);
  }

 private:
  const std::int64_t file_;
  const std::int64_t drawn_;
};

}  // namespace VorselKelp::gif
