#include "gif/FrameSequence.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace VorselKelp::gif {
namespace {

/// What a reader holds beside a frame's indices: code tables and palettes.
constexpr std::int64_t readerSize = std::int64_t{48} << 10;
/// What an image costs beside its pixels.
constexpr std::int64_t imageOverhead = 256;
constexpr std::int64_t bytesPerPixel = 4;
/// A frame may be this large though its canvas is smaller; it is cut to the canvas.
constexpr std::int64_t smallFrame = std::int64_t{16} << 10;

/// Files that ask for no delay, or for one that no screen can show, were made with slow programs in mind: 0
/// and 10 ms are raised to 100 and 20 ms.
double shownFor(int hundredths) {
  if (hundredths <= 0) return 0.1;
  return std::max(hundredths, 2) / 100.0;
}

}  // namespace

struct FrameSequence::Plan {
  int width = 0;
  int height = 0;
  int drawnWidth = 0;
  int drawnHeight = 0;
  std::int64_t largest = 0;  ///< pixels of a frame in the file
  std::size_t mostKept = 0;  ///< images that may exist at once
};

std::optional<FrameSequence::Plan> FrameSequence::planFor(int width, int height, std::size_t budget) {
  const auto pixels = std::int64_t{width} * height;
  Plan plan{width, height, width, height, std::max(pixels, smallFrame), 0};
  const auto room = static_cast<std::int64_t>(std::min<std::size_t>(budget, INT32_MAX)) - readerSize -
                    plan.largest - 2 * imageOverhead - width * std::int64_t{sizeof(AxisScale::Share)};
  // Three canvases: what is seen, what takes its place, and what a frame that is to be taken away again has
  // saved.
  const auto mostPixels = room / 3 / bytesPerPixel;
  if (mostPixels <= 0) return std::nullopt;
  if (pixels > mostPixels) {
    const double scale = std::sqrt(static_cast<double>(mostPixels) / static_cast<double>(pixels));
    plan.drawnWidth = static_cast<int>(width * scale);
    plan.drawnHeight = static_cast<int>(height * scale);
  }
  if (plan.drawnWidth * 2 < width || plan.drawnHeight * 2 < height || plan.drawnWidth * plan.drawnHeight == 0)
    return std::nullopt;
  const auto canvas = std::int64_t{plan.drawnWidth} * plan.drawnHeight * bytesPerPixel;
  plan.mostKept = static_cast<std::size_t>((room - canvas + 2 * imageOverhead) / (canvas + imageOverhead));
  return plan;
}

std::unique_ptr<FrameSequence> FrameSequence::open(platform::ImageDecoder& decoder,
                                                   const std::shared_ptr<const std::string>& bytes,
                                                   std::size_t budget) {
  auto reader = decoder.openGif(bytes, static_cast<std::int64_t>(std::min<std::size_t>(budget, INT32_MAX)));
  if (!reader) return nullptr;
  const auto plan = planFor((*reader)->width(), (*reader)->height(), budget);
  if (!plan) return nullptr;
  // Again, now that it is known how large a frame may be.
  reader = decoder.openGif(bytes, plan->largest);
  if (!reader) return nullptr;
  return std::unique_ptr<FrameSequence>(new FrameSequence(*std::move(reader), *plan));
}

FrameSequence::FrameSequence(std::unique_ptr<platform::GifReader> reader, const Plan& plan)
    : reader_(std::move(reader)),
      compositor_(std::in_place, plan.width, plan.height, plan.drawnWidth, plan.drawnHeight),
      mostKept_(plan.mostKept) {}

bool FrameSequence::advance() {
  if (!reader_) return advanceKept();
  const platform::GifFrame* frame = reader_->next();
  if (!frame) {
    if (!startAgain()) return false;
    if (!reader_) return advanceKept();
    frame = reader_->next();
    if (!frame) return false;
  }
  draw(*frame);
  return true;
}

/// At the end of a round. A single frame doesn't move, so it is not played again.
bool FrameSequence::startAgain() {
  // Absent means that the file is played once; 0 for ever; any other number, so often again after the first
  // time. (A file without repetitions has no reason to hold a number.)
  if (!roundsLeft_) {
    const auto loops = reader_ ? reader_->loopCount() : std::nullopt;
    roundsLeft_ = !loops ? 0 : *loops == 0 ? -1 : *loops;
  }
  if (count_ < 2 || *roundsLeft_ == 0) return false;
  if (*roundsLeft_ > 0) --*roundsLeft_;
  count_ = 0;
  if (keeping_) {
    reader_.reset();
    compositor_.reset();
  } else if (reader_) {
    reader_->rewind();
    compositor_->restart();
  }
  return true;
}

bool FrameSequence::advanceKept() {
  if (count_ == kept_.size() && !startAgain()) return false;
  image_ = kept_[count_].image;
  delay_ = kept_[count_].delay;
  ++count_;
  return true;
}

void FrameSequence::draw(const platform::GifFrame& frame) {
  if (keeping_ && kept_.size() + 1 > mostKept_) {
    keeping_ = false;
    kept_ = {};
  }
  if (count_++ == 0) {
    const auto size =
        static_cast<std::size_t>(compositor_->width()) * static_cast<std::size_t>(compositor_->height()) * 4;
    canvas_.assign(size, 0);
  } else if (canvas_.empty()) {
    canvas_.assign(image_->pixels().begin(), image_->pixels().end());
  }
  compositor_->draw(canvas_, frame);
  delay_ = shownFor(frame.delay);
  if (keeping_) kept_.push_back({image(), delay_});
}

ui::ImagePtr FrameSequence::image() {
  if (!canvas_.empty())
    image_ = std::make_shared<ui::Image>(compositor_->width(), compositor_->height(),
                                         std::exchange(canvas_, std::vector<std::uint8_t>()));
  return image_;
}

}  // namespace VorselKelp::gif
