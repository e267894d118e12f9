#include "gif/StreamedFrames.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace VorselKelp::gif {
namespace {

/// Files that ask for no delay, or for one that no screen can show, were made with slow programs in mind: 0
/// and 10 ms are raised to 100 and 20 ms.
double shownFor(int hundredths) {
  if (hundredths <= 0) return 0.1;
  return std::max(hundredths, 2) / 100.0;
}

}  // namespace

StreamedFrames::StreamedFrames(std::unique_ptr<platform::GifReader> reader, const FramePlan& plan)
    : reader_(std::move(reader)), compositor_(plan.width, plan.height, plan.drawnWidth, plan.drawnHeight) {}

void StreamedFrames::draw(const platform::GifFrame& frame) {
  if (std::exchange(first_, false)) {
    const auto pixels =
        static_cast<std::size_t>(compositor_.width()) * static_cast<std::size_t>(compositor_.height());
    canvas_.assign(pixels * 4, 0);
  } else if (canvas_.empty()) {
    canvas_.assign(image_->pixels().begin(), image_->pixels().end());
  }
  compositor_.draw(canvas_, frame);
  delay_ = shownFor(frame.delay);
}

void StreamedFrames::rewind() {
  reader_->rewind();
  compositor_.restart();
  first_ = true;
}

ui::ImagePtr StreamedFrames::image() {
  if (!canvas_.empty())
    image_ = std::make_shared<ui::Image>(compositor_.width(), compositor_.height(),
                                         std::exchange(canvas_, std::vector<std::uint8_t>()));
  return image_;
}

}  // namespace VorselKelp::gif
