#include "gif/Player.h"

namespace VorselKelp::gif {
namespace {

/// So many frames are decoded at one refresh at most: a stall of 80 ms is made up for even at the shortest
/// delay, a longer one is not.
constexpr int mostFramesAtOnce = 4;

}  // namespace

void Player::resume() {
  if (!paused_) return;
  paused_ = false;
  due_.reset();  // the time that it stood still does not count
}

void Player::refresh(platform::ImageDecoder& decoder, double seconds) {
  const auto view = view_.lock();
  if (!view || !isPlaying()) return;
  if (!frames_ && !start(decoder)) return end();
  if (due_ && seconds < *due_) return;
  if (due_) catchUp(seconds);
  if (!due_) due_ = seconds + frames_->delay();
  const auto image = frames_->image();
  if (!bytes_) end();
  view->image = image;
}

bool Player::start(platform::ImageDecoder& decoder) {
  frames_ = FrameSequence::open(decoder, bytes_, frameBudget_);
  return frames_ && frames_->advance();
}

void Player::catchUp(double seconds) {
  for (int count = 0; seconds >= *due_; ++count) {
    if (count == mostFramesAtOnce) {
      due_ = seconds + frames_->delay();
      return;
    }
    if (!frames_->advance()) {
      bytes_.reset();
      return;
    }
    *due_ += frames_->delay();
  }
}

void Player::end() {
  bytes_.reset();
  frames_.reset();
}

}  // namespace VorselKelp::gif
