#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/platform/ImageDecoder.h"
#include "gif/FramePlan.h"
#include "gif/KeptFrames.h"
#include "gif/StreamedFrames.h"

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
  ui::ImagePtr image() { return streamed_ ? streamed_->image() : kept_->image(); }
  /// How long it is shown, in seconds.
  [[nodiscard]] double delay() const { return streamed_ ? streamed_->delay() : kept_->delay(); }

 private:
  FrameSequence(std::unique_ptr<platform::GifReader> reader, const FramePlan& plan);
  bool next();
  bool startAgain();

  std::optional<StreamedFrames> streamed_;  ///< absent once all frames are kept
  std::optional<KeptFrames> kept_;          ///< absent when they are too many
  std::size_t count_ = 0;                   ///< frames gone to in this round
  std::optional<int> roundsLeft_;           ///< known at the end of the first; below 0 for ever
};

}  // namespace VorselKelp::gif
