#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/ImageDecoder.h"
#include "gif/Compositor.h"

namespace VorselKelp::gif {

/// The frames of one animated GIF in the order in which they are shown, the repetitions that the file asks
/// for included. Everything held for it, the two pictures that exist while one replaces the other included,
/// stays within a budget: the frames are kept when all of them fit, and are decoded again in every round
/// otherwise. (Keeping some would save nothing: a frame is drawn onto the one before, so all of them are
/// decoded anyway.) What is too large for the budget even so is shown in fewer pixels, down to half as many
/// in each direction; what would need still fewer is not played.
///
/// A damaged file plays the frames in front of the damage.
class FrameSequence {
 public:
  /// Null when the bytes are no GIF, or when not even its half size fits `budget`, in bytes.
  static std::unique_ptr<FrameSequence> open(platform::ImageDecoder& decoder,
                                             const std::shared_ptr<const std::string>& bytes,
                                             std::size_t budget);

  /// Goes to the next frame, at first to the first. False at the end: the frame before stays.
  bool advance();
  /// The frame that was gone to. The same object until the next frame.
  ui::ImagePtr image();
  /// How long it is shown, in seconds.
  [[nodiscard]] double delay() const { return delay_; }

 private:
  struct Kept {
    ui::ImagePtr image;
    double delay;
  };
  struct Plan;

  FrameSequence(std::unique_ptr<platform::GifReader> reader, const Plan& plan);
  static std::optional<Plan> planFor(int width, int height, std::size_t budget);
  bool startAgain();
  bool advanceKept();
  void draw(const platform::GifFrame& frame);

  std::unique_ptr<platform::GifReader> reader_;  ///< null once all frames are kept
  std::optional<Compositor> compositor_;
  const std::size_t mostKept_;
  bool keeping_ = true;
  std::vector<Kept> kept_;
  std::size_t count_ = 0;             ///< frames gone to in this round
  std::optional<int> roundsLeft_;     ///< known at the end of the first; below 0 for ever
  std::vector<std::uint8_t> canvas_;  ///< the frame gone to, while it is not an image; else empty
  ui::ImagePtr image_;                ///< the frame gone to, or one before it
  double delay_ = 0;
};

}  // namespace VorselKelp::gif
