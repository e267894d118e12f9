#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "VorselKelp/ui/Image.h"

namespace VorselKelp::gif {

/// Frames of the first round that are shown again in the later ones.
class KeptFrames {
 public:
  explicit KeptFrames(std::size_t most) : most_(most) {}

  [[nodiscard]] bool full() const { return frames_.size() >= most_; }
  /// The frame becomes the one that was gone to.
  void add(ui::ImagePtr image, double delay) {
    frames_.push_back({std::move(image), delay});
    next_ = frames_.size();
  }

  /// Goes to the next frame; false at the end of a round.
  bool advance() {
    if (next_ == frames_.size()) return false;
    ++next_;
    return true;
  }
  void rewind() { next_ = 0; }

  // Of the frame that was gone to; there must be one.
  [[nodiscard]] const ui::ImagePtr& image() const { return frames_[next_ - 1].image; }
  [[nodiscard]] double delay() const { return frames_[next_ - 1].delay; }

 private:
  struct Frame {
    ui::ImagePtr image;
    double delay;
  };

  const std::size_t most_;
  std::vector<Frame> frames_;
  std::size_t next_ = 0;
};

}  // namespace VorselKelp::gif
