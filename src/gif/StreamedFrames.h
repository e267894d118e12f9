#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "VorselKelp/platform/ImageDecoder.h"
#include "gif/Compositor.h"
#include "gif/FramePlan.h"

namespace VorselKelp::gif {

/// Frames that are decoded from the file in every round, each drawn onto the one before.
class StreamedFrames {
 public:
  StreamedFrames(std::unique_ptr<platform::GifReader> reader, const FramePlan& plan);

  /// The next frame of the file, to be drawn before the next call; null at the end of a round.
  const platform::GifFrame* read() { return reader_->next(); }
  void draw(const platform::GifFrame& frame);
  /// To the first frame again.
  void rewind();

  /// The frame drawn last. The same object until the next one is.
  ui::ImagePtr image();
  /// How long it is shown, in seconds.
  [[nodiscard]] double delay() const { return delay_; }
  [[nodiscard]] std::optional<int> loopCount() const { return reader_->loopCount(); }

 private:
  const std::unique_ptr<platform::GifReader> reader_;
  Compositor compositor_;
  bool first_ = true;                 ///< no frame of this round is drawn yet
  std::vector<std::uint8_t> canvas_;  ///< the frame drawn last, while it is not an image; else empty
  ui::ImagePtr image_;                ///< the frame drawn last, or one before it
  double delay_ = 0;
};

}  // namespace VorselKelp::gif
