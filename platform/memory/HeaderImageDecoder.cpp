#include "VorselKelpTesting/HeaderImageDecoder.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

namespace VorselKelp::testing_platform {

using platform::ImageInfo;

namespace {

using namespace std::string_view_literals;

constexpr auto pngSignature = "\x89PNG\r\n\x1a\n"sv;

struct Size {
  std::uint32_t width;
  std::uint32_t height;
};

std::uint32_t byteAt(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

std::uint32_t bigEndian(std::string_view bytes, std::size_t at, std::size_t length) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < length; ++i) value = value << 8 | byteAt(bytes, at + i);
  return value;
}

std::optional<Size> pngSize(std::string_view bytes) {
  if (bytes.size() < 24 || bytes.substr(12, 4) != "IHDR") return std::nullopt;
  return Size{bigEndian(bytes, 16, 4), bigEndian(bytes, 20, 4)};
}

std::optional<Size> gifSize(std::string_view bytes) {
  if (bytes.size() < 10) return std::nullopt;
  return Size{byteAt(bytes, 6) | byteAt(bytes, 7) << 8, byteAt(bytes, 8) | byteAt(bytes, 9) << 8};
}

bool isFrameHeader(std::uint32_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Walks from segment to segment up to the frame header, which is the one that knows the size.
std::optional<Size> jpegSize(std::string_view bytes) {
  std::size_t at = 2;
  while (at + 9 <= bytes.size() && byteAt(bytes, at) == 0xFF) {
    const std::uint32_t marker = byteAt(bytes, at + 1);
    if (isFrameHeader(marker)) return Size{bigEndian(bytes, at + 7, 2), bigEndian(bytes, at + 5, 2)};
    at += 2 + bigEndian(bytes, at + 2, 2);
  }
  return std::nullopt;
}

Result<ImageInfo> info(std::optional<Size> size, const char* extension, std::int64_t pixelLimit) {
  constexpr std::uint32_t largest = std::numeric_limits<int>::max();
  if (!size || size->width == 0 || size->height == 0 || size->width > largest || size->height > largest) {
    return Error{"the picture's header is broken"};
  }
  if (std::int64_t{size->width} > pixelLimit / std::int64_t{size->height}) return Error{"too many pixels"};
  return ImageInfo{static_cast<int>(size->width), static_cast<int>(size->height), extension};
}

void append(std::string& bytes, unsigned value, int length) {
  for (int shift = 8 * (length - 1); shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
}

}  // namespace

Result<ImageInfo> HeaderImageDecoder::inspect(std::string_view bytes, std::int64_t pixelLimit) {
  if (bytes.starts_with(pngSignature)) return info(pngSize(bytes), "png", pixelLimit);
  if (bytes.starts_with("\xff\xd8\xff"sv)) return info(jpegSize(bytes), "jpg", pixelLimit);
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a"))
    return info(gifSize(bytes), "gif", pixelLimit);
  return Error{"not a picture"};
}

Result<ui::ImagePtr> HeaderImageDecoder::decode(std::string_view bytes, std::int64_t pixelLimit) {
  const auto info = inspect(bytes, pixelLimit);
  if (!info) return info.error();
  const auto pixels = static_cast<std::size_t>(info->width) * static_cast<std::size_t>(info->height);
  return ui::ImagePtr(
      std::make_shared<ui::Image>(info->width, info->height, std::vector<std::uint8_t>(pixels * 4)));
}

namespace {

class GivenFrames final : public platform::GifReader {
 public:
  GivenFrames(platform::ImageInfo canvas, std::vector<HeaderImageDecoder::Frame> frames,
              std::optional<int> loopCount)
      : canvas_(std::move(canvas)), frames_(std::move(frames)), loopCount_(loopCount) {}

  [[nodiscard]] int width() const override { return canvas_.width; }
  [[nodiscard]] int height() const override { return canvas_.height; }
  [[nodiscard]] std::optional<int> loopCount() const override { return loopCount_; }
  const platform::GifFrame* next() override {
    if (next_ == frames_.size()) return nullptr;
    const auto& given = frames_[next_++];
    frame_ = {given.left,    given.top,         given.width,    given.height, given.indices,
              given.palette, given.transparent, given.disposal, given.delay};
    return &frame_;
  }
  void rewind() override { next_ = 0; }

 private:
  const platform::ImageInfo canvas_;
  const std::vector<HeaderImageDecoder::Frame> frames_;
  const std::optional<int> loopCount_;
  std::size_t next_ = 0;
  platform::GifFrame frame_;
};

}  // namespace

Result<std::unique_ptr<platform::GifReader>> HeaderImageDecoder::openGif(
    std::shared_ptr<const std::string> bytes, std::int64_t pixelLimit) {
  auto info = inspect(*bytes, pixelLimit);
  if (!info) return info.error();
  if (info->fileExtension != "gif") return Error{"This is no GIF"};
  const std::lock_guard lock(mutex_);
  return std::unique_ptr<platform::GifReader>(
      std::make_unique<GivenFrames>(*std::move(info), frames_, loopCount_));
}

void HeaderImageDecoder::setFrames(std::vector<Frame> frames, std::optional<int> loopCount) {
  const std::lock_guard lock(mutex_);
  frames_ = std::move(frames);
  loopCount_ = loopCount;
}

std::string pngBeginning(unsigned width, unsigned height) {
  std::string bytes(pngSignature);
  append(bytes, 13, 4);
  bytes += "IHDR";
  append(bytes, width, 4);
  append(bytes, height, 4);
  bytes += "\x08\x06\x00\x00\x00"sv;
  return bytes;
}

std::string jpegBeginning(unsigned width, unsigned height) {
  std::string bytes("\xff\xd8\xff\xe0\x00\x04\x00\x00\xff\xc0\x00\x0b\x08"sv);
  append(bytes, height, 2);
  append(bytes, width, 2);
  bytes += "\x01\x01\x11\x00"sv;
  return bytes;
}

std::string gifBeginning(unsigned width, unsigned height) {
  std::string bytes("GIF89a");
  for (const unsigned side : {width, height}) append(bytes, (side & 0xFFU) << 8 | (side >> 8 & 0xFFU), 2);
  bytes += "\x00\x00\x00;"sv;
  return bytes;
}

}  // namespace VorselKelp::testing_platform
