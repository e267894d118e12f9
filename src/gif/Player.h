#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "VorselKelp/ui/ImageView.h"
#include "gif/FrameSequence.h"

namespace VorselKelp::gif {

/// One animated picture in one view, which is held weakly. Main thread.
class Player {
 public:
  /// `image` has an animation.
  Player(std::weak_ptr<ui::ImageView> view, const ui::ImagePtr& image, std::size_t frameBudget)
      : view_(std::move(view)), given_(image), frameBudget_(frameBudget), bytes_(image->animation()) {}

  /// Whether it is `image` that is played here.
  [[nodiscard]] bool isOf(const ui::ImagePtr& image) const { return given_.lock() == image; }
  [[nodiscard]] bool isIn(const ui::ImageView& view) const { return view_.lock().get() == &view; }
  [[nodiscard]] bool hasView() const { return !view_.expired(); }

  /// Whether it goes on with the next refresh of the screen.
  [[nodiscard]] bool isPlaying() const { return bytes_ && !paused_ && hasView(); }
  void pause() { paused_ = true; }
  void resume();

  /// The screen is refreshed at `seconds`. The file is opened and decoded here, and each time only as far as
  /// a bounded number of frames: what has fallen further behind goes on from where it is.
  void refresh(platform::ImageDecoder& decoder, double seconds);

 private:
  bool start(platform::ImageDecoder& decoder);
  void catchUp(double seconds);
  void end();

  const std::weak_ptr<ui::ImageView> view_;
  const std::weak_ptr<const ui::Image> given_;
  const std::size_t frameBudget_;
  std::shared_ptr<const std::string> bytes_;  ///< null when the animation is over
  std::unique_ptr<FrameSequence> frames_;     ///< null before the first refresh
  std::optional<double> due_;                 ///< when the next frame is; absent while time stands still
  bool paused_ = false;
};

}  // namespace VorselKelp::gif
