#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "gif/ImageLoading.h"
#include "posix/support/GifFile.h"

namespace VorselKelp::testing_support {
namespace {

constexpr std::int64_t gifLimit = 4096;

std::vector<std::uint8_t> noise(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint8_t> indices(static_cast<std::size_t>(width * height));
  for (auto& index : indices) index = static_cast<std::uint8_t>(random() % 4);
  return indices;
}

const std::vector<GifColorType> colors{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {9, 8, 7}};

struct Read {
  int left, top, width, height;
  std::vector<std::uint8_t> indices;
};

class GifReaderTest : public testing::Test {
 protected:
  GifReaderTest() {
    GifFileFrame first{0, 0, 20, 19, noise(20, 19, 1), false, {}};
    first.interlaced = true;
    first.delay = 7;
    GifFileFrame second{30, 2, 5, 300, noise(5, 300, 2), false, {}};
    second.palette = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    second.transparent = 2;
    second.disposal = DISPOSE_PREVIOUS;
    second.delay = 65535;
    frames_ = {first, second};
    file_ = gifFile(32, 20, colors, frames_, 3);
  }

  std::unique_ptr<platform::GifReader> open(const std::string& bytes, std::int64_t pixels = gifLimit) {
    auto reader = decoder_->openGif(std::make_shared<const std::string>(bytes), pixels);
    return reader ? *std::move(reader) : nullptr;
  }
  static std::vector<Read> readAll(platform::GifReader& reader) {
    std::vector<Read> all;
    while (const auto* frame = reader.next()) {
      EXPECT_EQ(frame->indices.size(), static_cast<std::size_t>(frame->width * frame->height));
      EXPECT_LE(frame->indices.size(), std::size_t{gifLimit});
      all.push_back({frame->left,
                     frame->top,
                     frame->width,
                     frame->height,
                     {frame->indices.begin(), frame->indices.end()}});
    }
    return all;
  }

  const std::shared_ptr<platform::ImageDecoder> decoder_ = posix::makeImageDecoder();
  std::vector<GifFileFrame> frames_;
  std::string file_;
};

TEST_F(GifReaderTest, ReadsFramesAsTheFileHasThemAndAgain) {
  const auto reader = open(file_);
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader->width(), 32);
  EXPECT_EQ(reader->height(), 20);
  for (int round = 0; round < 2; ++round) {
    const auto* frame = reader->next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(reader->loopCount(), 3);
    EXPECT_THAT(frame->indices, testing::ElementsAreArray(frames_[0].indices)) << "de-interlaced";
    EXPECT_EQ(frame->palette.size(), 4U);
    EXPECT_EQ(frame->palette[3].green, 8);
    EXPECT_FALSE(frame->transparent);
    EXPECT_EQ(frame->delay, 7);
    frame = reader->next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->left, 30);
    EXPECT_EQ(frame->top, 2);
    EXPECT_THAT(frame->indices, testing::ElementsAreArray(frames_[1].indices));
    EXPECT_EQ(frame->palette[1].blue, 6);
    EXPECT_EQ(frame->transparent, 2);
    EXPECT_EQ(frame->disposal, platform::GifDisposal::previous);
    EXPECT_EQ(frame->delay, 65535);
    EXPECT_FALSE(reader->next());
    EXPECT_FALSE(reader->next());
    reader->rewind();
  }
  EXPECT_FALSE(open(gifFile(32, 20, colors, frames_))->loopCount());
}

TEST_F(GifReaderTest, BoundsTheCanvasAndEachFrame) {
  EXPECT_FALSE(open(file_, 32 * 20 - 1));
  EXPECT_EQ(readAll(*open(file_, 32 * 20)).size(), 1U) << "the second frame has 1500 pixels";
  EXPECT_EQ(readAll(*open(file_, 1500)).size(), 2U);
  for (const char* text : {"", "GIF", "GIF89a", "\x89PNG\r\n\x1a\n and no GIF"}) {
    const auto opened = decoder_->openGif(std::make_shared<const std::string>(text), gifLimit);
    ASSERT_FALSE(opened) << text;
    EXPECT_FALSE(opened.error().description.empty());
  }
}

// Every pixel that is given is one of the file, wherever it was cut; and the more there is, the more is
// shown.
TEST_F(GifReaderTest, AFileThatIsCutOffGivesTheRowsThatItHolds) {
  auto straight = frames_[1];
  straight.height = 400;
  straight.indices = noise(5, 400, 3);
  const auto file = gifFile(32, 20, colors, {straight, frames_[1]});
  std::size_t before = 0;
  for (std::size_t size = 0; size < file.size(); ++size) {
    const auto reader = open(file.substr(0, size));
    std::size_t pixels = 0;
    const auto read = reader ? readAll(*reader) : std::vector<Read>();
    for (std::size_t i = 0; i < read.size(); ++i) {
      const auto& whole = i == 0 ? straight : frames_[1];
      ASSERT_LE(read[i].indices.size(), whole.indices.size());
      ASSERT_EQ(read[i].width, whole.width);
      // A frame's very last pixel is guessed while its end is missing.
      const bool guessed = read[i].height == whole.height && i + 1 == read.size() && size + 2 < file.size();
      for (std::size_t at = 0; at + (guessed ? 1 : 0) < read[i].indices.size(); ++at)
        ASSERT_EQ(read[i].indices[at], whole.indices[at]) << size;
      pixels += read[i].indices.size();
    }
    EXPECT_GE(pixels, before) << size;
    before = pixels;
  }
  EXPECT_EQ(before, straight.indices.size() + frames_[1].indices.size()) << "all but the file's last byte";
}

TEST_F(GifReaderTest, RowsOfAnInterlacedFrameThatNeverCameShowTheRowAbove) {
  auto whole = frames_[0];
  whole.height = 200;
  whole.indices = noise(20, 200, 4);
  const auto file = gifFile(32, 20, colors, {whole});
  int filled = 0;
  for (std::size_t size = 0; size + 1 < file.size(); ++size) {
    const auto reader = open(file.substr(0, size));
    const auto read = reader ? readAll(*reader) : std::vector<Read>();
    if (read.empty()) continue;
    const auto row = [&](const std::vector<std::uint8_t>& from, int y) {
      return std::vector<std::uint8_t>(from.begin() + y * 20, from.begin() + y * 20 + 19);
    };
    for (int y = 0; y < read[0].height; ++y) {
      const auto shown = row(read[0].indices, y);
      if (shown == row(whole.indices, y)) continue;
      ASSERT_TRUE(y > 0 && shown == row(read[0].indices, y - 1)) << size << ": " << y;
      ++filled;
    }
    EXPECT_EQ(row(read[0].indices, 0), row(whole.indices, 0));
  }
  EXPECT_GT(filled, 0);
}

TEST_F(GifReaderTest, DamagedFilesEndAndStayWithinTheirBounds) {
  std::mt19937 random(11);
  std::size_t frames = 0;
  for (int round = 0; round < 1500; ++round) {
    std::string bytes = file_;
    for (int i = 0; i < 4; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
    if (const auto reader = open(bytes)) {
      const auto first = readAll(*reader);
      frames += first.size();
      reader->rewind();
      EXPECT_EQ(readAll(*reader).size(), first.size());
    }
    if (const auto image = gif::decodeImage(*decoder_, bytes)) {
      EXPECT_EQ((*image)->pixels().size(),
                static_cast<std::size_t>((*image)->width() * (*image)->height() * 4));
    }
  }
  EXPECT_GT(frames, 1500U);
}

TEST_F(GifReaderTest, AnimatedImagesKeepTheirBytesAndDamagedOnesStillShow) {
  const auto animated = gif::decodeImage(*decoder_, file_);
  ASSERT_TRUE(animated);
  ASSERT_TRUE((*animated)->animation());
  EXPECT_EQ(*(*animated)->animation(), file_);
  const auto still = gif::decodeImage(*decoder_, gifFile(32, 20, colors, {frames_[0]}));
  ASSERT_TRUE(still);
  EXPECT_FALSE((*still)->animation());

  const auto palette = [&](std::size_t index) {
    return std::vector<std::uint8_t>{colors[index].Red, colors[index].Green, colors[index].Blue, 255};
  };
  const auto pixel = [](const ui::Image& image, std::size_t at) {
    return std::vector<std::uint8_t>(image.pixels().begin() + static_cast<std::ptrdiff_t>(at * 4),
                                     image.pixels().begin() + static_cast<std::ptrdiff_t>(at * 4 + 4));
  };
  EXPECT_EQ(pixel(**animated, 32 + 3), palette(frames_[0].indices[20 + 3]));
  EXPECT_EQ(pixel(**animated, 20), (std::vector<std::uint8_t>{0, 0, 0, 0})) << "beside the frame";
  std::size_t shown = 0;
  for (std::size_t size = 0; size < file_.size(); ++size) {
    const auto cut = gif::decodeImage(*decoder_, file_.substr(0, size));
    if (!cut) continue;
    ++shown;
    EXPECT_EQ(pixel(**cut, 0), palette(frames_[0].indices[0])) << size;
  }
  EXPECT_GT(shown, file_.size() / 2);
}

TEST_F(GifReaderTest, AMissingLibraryIsAnError) {
  const auto decoder = posix::makeImageDecoder({.gifLibraryName = "libof-no-such-name.so.1"});
  const auto opened = decoder->openGif(std::make_shared<const std::string>(file_), gifLimit);
  ASSERT_FALSE(opened);
  EXPECT_NE(opened.error().description.find("libof-no-such-name"), std::string::npos);
}

}  // namespace
}  // namespace VorselKelp::testing_support
