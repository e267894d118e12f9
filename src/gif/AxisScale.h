#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace VorselKelp::gif {

/// How the pixels of a file become fewer along one axis: by their areas. At most half of them go.
class AxisScale {
 public:
  /// Of the file's pixels one behind the other, how much each has of a drawn one; together total().
  struct Share {
    std::int64_t first = 0;
    std::array<std::int64_t, 3> weights{};
  };

  AxisScale(int file, int drawn) : file_(file), drawn_(drawn) {}

  [[nodiscard]] std::int64_t total() const { return file_; }
  [[nodiscard]] Share shareOf(int drawn) const {
    const std::int64_t begin = drawn * file_;
    Share share{begin / drawn_, {}};
    for (std::size_t i = 0; i < share.weights.size(); ++i) {
      const std::int64_t from = (share.first + static_cast<std::int64_t>(i)) * drawn_;
      share.weights[i] =
          std::max<std::int64_t>(0, std::min(from + drawn_, begin + file_) - std::max(from, begin));
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
