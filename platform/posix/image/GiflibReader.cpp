#include "image/GiflibReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace VorselKelp::posix {
namespace {

using platform::GifFrame;

/// Every which row an interlaced frame holds in each of its four passes, and with which row a pass begins.
struct Pass {
  int first;
  int step;
};
constexpr std::array<Pass, 4> interlaced{{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
constexpr std::array<Pass, 1> straight{{{0, 1}}};

class GiflibReader final : public platform::GifReader {
 public:
  GiflibReader(std::shared_ptr<const GifLibrary> library, std::string_view bytes,
               std::shared_ptr<const std::string> owner, std::int64_t pixelLimit)
      : library_(std::move(library)), owner_(std::move(owner)), bytes_(bytes), pixelLimit_(pixelLimit) {}
  ~GiflibReader() override { close(); }
  GiflibReader(const GiflibReader&) = delete;
  GiflibReader& operator=(const GiflibReader&) = delete;

  Status open() {
    if (const int error = begin()) {
      const char* text = library_->errorText(error);
      return Error{text ? text : "no GIF"};
    }
    width_ = file_->SWidth;
    height_ = file_->SHeight;
    if (width_ <= 0 || height_ <= 0) return Error{"a GIF without a size"};
    if (std::int64_t{width_} * height_ > pixelLimit_) {
      return Error{"a GIF of " + std::to_string(width_) + " by " + std::to_string(height_) +
                   " pixels is too large"};
    }
    return Done{};
  }

  [[nodiscard]] int width() const override { return width_; }
  [[nodiscard]] int height() const override { return height_; }
  [[nodiscard]] std::optional<int> loopCount() const override { return loopCount_; }

  const GifFrame* next() override {
    frame_ = {};
    for (GifRecordType type{}; file_ && library_->recordType(file_, &type) == GIF_OK;) {
      if (type == IMAGE_DESC_RECORD_TYPE && readHeader()) {
        const bool whole = readRows();
        if (!whole) close();  // nothing behind it can be found
        return whole || !frame_.indices.empty() ? &frame_ : nullptr;
      }
      if (type != EXTENSION_RECORD_TYPE || !readExtension()) break;
    }
    close();
    return nullptr;
  }

  void rewind() override {
    close();
    begin();
  }

 private:
  /// Zero, or giflib's reason against it.
  int begin() {
    at_ = 0;
    int error = 0;
    file_ = library_->open(this, &GiflibReader::read, &error);
    return file_ ? 0 : error;
  }

  void close() {
    if (file_) library_->close(std::exchange(file_, nullptr), nullptr);
  }

  static int read(GifFileType* file, GifByteType* buffer, int wanted) {
    auto& self = *static_cast<GiflibReader*>(file->UserData);
    const auto piece = self.bytes_.substr(self.at_, static_cast<std::size_t>(std::max(wanted, 0)));
    if (!piece.empty()) std::memcpy(buffer, piece.data(), piece.size());
    self.at_ += piece.size();
    return static_cast<int>(piece.size());
  }

  bool readHeader() {
    if (library_->imageHeader(file_) != GIF_OK) return false;
    const GifImageDesc& image = file_->Image;
    if (image.Width < 0 || image.Height < 0) return false;
    if (std::int64_t{image.Width} * image.Height > pixelLimit_) return false;
    frame_.left = image.Left;
    frame_.top = image.Top;
    frame_.width = image.Width;
    frame_.height = image.Height;
    readPalette(image.ColorMap ? image.ColorMap : file_->SColorMap);
    return true;
  }

  void readPalette(const ColorMapObject* map) {
    const auto count = map ? std::clamp(map->ColorCount, 0, static_cast<int>(palette_.size())) : 0;
    for (int i = 0; i < count; ++i) {
      const GifColorType& color = map->Colors[i];
      palette_[static_cast<std::size_t>(i)] = {color.Red, color.Green, color.Blue};
    }
    frame_.palette = std::span(palette_).first(static_cast<std::size_t>(count));
  }

  /// Whether the frame was there to its end. Otherwise it is made lower, to the rows that there are.
  bool readRows() {
    const auto width = static_cast<std::size_t>(frame_.width);
    const int height = frame_.height;
    const bool interlace = file_->Image.Interlace;
    if (width == 0 || height == 0) return skipRows();
    indices_.resize(width * static_cast<std::size_t>(height));
    lastRowRead_ = false;
    int got = 0;
    bool whole = true;
    for (const Pass& pass : interlace ? std::span<const Pass>(interlaced) : std::span<const Pass>(straight)) {
      for (int row = pass.first; whole && row < height; row += pass.step) {
        whole = readRow(row, got + 1 == height);
        if (whole || lastRowRead_) ++got;
      }
    }
    if (interlace && got < height) got = fillGaps(got);
    frame_.height = got;
    frame_.indices = std::span(indices_).first(width * static_cast<std::size_t>(got));
    return whole;
  }

  /// giflib fails the row that completes a frame when the frame's end is missing behind it, which must not
  /// cost the row: its last pixel is asked for alone.
  bool readRow(int row, bool completes) {
    const auto width = static_cast<std::size_t>(frame_.width);
    GifPixelType* pixels = indices_.data() + width * static_cast<std::size_t>(row);
    if (!completes || frame_.width == 1) return library_->line(file_, pixels, frame_.width) == GIF_OK;
    lastRowRead_ = library_->line(file_, pixels, frame_.width - 1) == GIF_OK;
    if (!lastRowRead_) return false;
    pixels[width - 1] = pixels[width - 2];
    return library_->line(file_, pixels + width - 1, 1) == GIF_OK;
  }

  bool skipRows() {
    GifByteType* block = nullptr;
    do {
      if (library_->codeNext(file_, &block) != GIF_OK) return false;
    } while (block);
    return true;
  }

  /// Rows of an interlaced frame that never came show the row above, as while a picture still loads. Answers
  /// how many rows there are then.
  int fillGaps(int got) {
    const auto width = static_cast<std::size_t>(frame_.width);
    int height = std::min<int>(frame_.height, got * interlaced[0].step);
    std::vector<bool> known(static_cast<std::size_t>(frame_.height));
    for (const Pass& pass : interlaced) {
      for (int row = pass.first; got > 0 && row < frame_.height; row += pass.step, --got)
        known[static_cast<std::size_t>(row)] = true;
    }
    for (std::size_t row = 1; row < static_cast<std::size_t>(height); ++row) {
      if (!known[row]) std::memcpy(&indices_[row * width], &indices_[(row - 1) * width], width);
    }
    return height;
  }

  bool readExtension() {
    int code = 0;
    GifByteType* block = nullptr;
    if (library_->extension(file_, &code, &block) != GIF_OK) return false;
    const bool loops = code == APPLICATION_EXT_FUNC_CODE && block && isLooping(text(block));
    if (code == GRAPHICS_EXT_FUNC_CODE && block) readControl(text(block));
    while (block) {
      if (library_->extensionNext(file_, &block) != GIF_OK) return false;
      if (loops && block) readLoopCount(text(block));
    }
    return true;
  }

  /// A block without the byte that counts the others.
  static std::span<const GifByteType> text(const GifByteType* block) {
    return {block + 1, std::size_t{block[0]}};
  }

  static bool isLooping(std::span<const GifByteType> block) {
    const std::string_view name(reinterpret_cast<const char*>(block.data()), block.size());
    return name == "NETSCAPE2.0" || name == "ANIMEXTS1.0";
  }

  void readLoopCount(std::span<const GifByteType> block) {
    if (block.size() >= 3 && block[0] == 1) loopCount_ = block[1] | block[2] << 8;
  }

  void readControl(std::span<const GifByteType> block) {
    if (block.size() < 4) return;
    const int disposal = block[0] >> 2 & 7;
    frame_.disposal =
        disposal <= 3 ? static_cast<platform::GifDisposal>(disposal) : platform::GifDisposal::keep;
    frame_.delay = block[1] | block[2] << 8;
    frame_.transparent = block[0] & 1 ? std::optional<std::uint8_t>(block[3]) : std::nullopt;
  }

  const std::shared_ptr<const GifLibrary> library_;
  const std::shared_ptr<const std::string> owner_;
  const std::string_view bytes_;
  const std::int64_t pixelLimit_;
  GifFileType* file_ = nullptr;  ///< null once nothing more can be read
  std::size_t at_ = 0;
  int width_ = 0;
  int height_ = 0;
  std::optional<int> loopCount_;
  bool lastRowRead_ = false;
  GifFrame frame_;
  std::vector<std::uint8_t> indices_;
  std::array<platform::GifColor, 256> palette_{};
};

}  // namespace

Result<std::unique_ptr<platform::GifReader>> openGif(std::shared_ptr<const GifLibrary> library,
                                                     std::string_view bytes,
                                                     std::shared_ptr<const std::string> owner,
                                                     std::int64_t pixelLimit) {
  auto reader = std::make_unique<GiflibReader>(std::move(library), bytes, std::move(owner), pixelLimit);
  if (auto opened = reader->open(); !opened) return opened.error();
  return std::unique_ptr<platform::GifReader>(std::move(reader));
}

}  // namespace VorselKelp::posix
