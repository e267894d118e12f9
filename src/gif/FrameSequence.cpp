#include "gif/FrameSequence.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace VorselKelp::gif {

std::unique_ptr<FrameSequence> FrameSequence::open(platform::ImageDecoder& decoder,
                                                   const std::shared_ptr<const std::string>& bytes,
                                                   std::size_t budget) {
  auto reader = decoder.openGif(bytes, static_cast<std::int64_t>(std::min<std::size_t>(budget, INT32_MAX)));
  if (!reader) return nullptr;
  const auto plan = planFrames((*reader)->width(), (*reader)->height(), budget);
  if (!plan) return nullptr;
  // Again, now that it is known how large a frame may be.
  reader = decoder.openGif(bytes, plan->largest);
  if (!reader) return nullptr;
  return std::unique_ptr<FrameSequence>(new FrameSequence(*std::move(reader), *plan));
}

FrameSequence::FrameSequence(std::unique_ptr<platform::GifReader> reader, const FramePlan& plan)
    : streamed_(std::in_place, std::move(reader), plan), kept_(plan.mostKept) {}

bool FrameSequence::advance() {
  if (!next() && !(startAgain() && next())) return false;
  ++count_;
  return true;
}

bool FrameSequence::next() {
  if (!streamed_) return kept_->advance();
  const platform::GifFrame* frame = streamed_->read();
  if (!frame) return false;
  if (kept_ && kept_->full()) kept_.reset();  // before there is one more picture
  streamed_->draw(*frame);
  if (kept_) kept_->add(streamed_->image(), streamed_->delay());
  return true;
}

/// At the end of a round. A single frame doesn't move, so it is not played again.
bool FrameSequence::startAgain() {
  // Absent means that the file is played once; 0 for ever; any other number, so often again after the first
  // time. (A file without repetitions has no reason to hold a number.)
  if (!roundsLeft_) {
    const auto loops = streamed_->loopCount();
    roundsLeft_ = !loops ? 0 : *loops == 0 ? -1 : *loops;
  }
  if (count_ < 2 || *roundsLeft_ == 0) return false;
  if (*roundsLeft_ > 0) --*roundsLeft_;
  count_ = 0;
  if (kept_) {
    streamed_.reset();
    kept_->rewind();
  } else {
    streamed_->rewind();
  }
  return true;
}

}  // namespace VorselKelp::gif
