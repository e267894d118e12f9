#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace VorselKelp::ui {

/// A decoded picture; never changes. Shared by whoever shows it, on any thread.
class Image {
 public:
  /// `pixels`: four bytes each (red, green, blue, alpha; not multiplied by alpha), row after row from the top
  /// left, width × height of them. `animation`: the bytes of the file when it holds several frames, of which
  /// `pixels` is the first.
  Image(int width, int height, std::vector<std::uint8_t> pixels,
        std::shared_ptr<const std::string> animation = nullptr)
      : width_(width), height_(height), pixels_(std::move(pixels)), animation_(std::move(animation)) {}

  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }
  [[nodiscard]] std::span<const std::uint8_t> pixels() const { return pixels_; }
  /// Null for a still picture.
  [[nodiscard]] const std::shared_ptr<const std::string>& animation() const { return animation_; }

 private:
  int width_;
  int height_;
  std::vector<std::uint8_t> pixels_;
  std::shared_ptr<const std::string> animation_;
};

using ImagePtr = std::shared_ptr<const Image>;

}  // namespace VorselKelp::ui
