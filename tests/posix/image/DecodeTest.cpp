#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpPosix/SquarePicture.h"
#include "image/Orientation.h"
#include "posix/support/PictureFiles.h"

namespace VorselKelp::testing_support {
namespace {

constexpr std::int64_t limit = 1 << 20;
using Pixels = std::vector<std::uint8_t>;

Pixels pixelsOf(const ui::Image& image) {
  return {image.pixels().begin(), image.pixels().end()};
}

/// `count` opaque or other pixels, each differing from the ones around it.
Pixels gradient(int count, std::size_t channels) {
  Pixels pixels(static_cast<std::size_t>(count) * channels);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * 7 % 251 + 1);
  return pixels;
}

class DecodeTest : public testing::Test {
 protected:
  /// Every pixel is the one expected, or empty because it is missing; answers how many are there.
  static std::size_t shownOf(const ui::Image& image, const Pixels& expected) {
    EXPECT_EQ(image.pixels().size(), expected.size());
    std::size_t shown = 0;
    for (std::size_t at = 0; at < std::min(expected.size(), image.pixels().size()); at += 4) {
      const bool right = std::equal(expected.begin() + static_cast<std::ptrdiff_t>(at),
                                    expected.begin() + static_cast<std::ptrdiff_t>(at + 4),
                                    image.pixels().begin() + static_cast<std::ptrdiff_t>(at));
      const auto* pixel = &image.pixels()[at];
      EXPECT_TRUE(right || std::all_of(pixel, pixel + 3, [](auto byte) { return byte == 0; })) << at / 4;
      shown += right ? 1 : 0;
    }
    return shown;
  }

  /// Cuts `bytes` behind each of their bytes but the last few, which hold no pixels.
  void cutEverywhere(const std::string& bytes, const Pixels& expected, std::size_t step) {
    std::size_t partly = 0;
    std::size_t before = 0;
    for (std::size_t size = 0; size < bytes.size(); size += step) {
      const auto image = decoder_->decode(bytes.substr(0, size), limit);
      if (!image) {
        EXPECT_EQ(before, 0U) << "what showed already went away at " << size;
        continue;
      }
      const auto shown = shownOf(**image, expected);
      EXPECT_GE(shown, before) << size;
      partly += shown > 0 && shown < expected.size() / 4 ? 1 : 0;
      before = shown;
    }
    EXPECT_GT(partly, 0U);
  }

  const std::shared_ptr<platform::ImageDecoder> decoder_ = posix::makeImageDecoder();
};

TEST_F(DecodeTest, PixelsAreRgbaFromTheTopLeft) {
  const auto rgba = gradient(6, 4);
  const auto image = decoder_->decode(pngFile(3, 2, 4, rgba), 6);
  ASSERT_TRUE(image) << image.error().description;
  EXPECT_EQ((*image)->width(), 3);
  EXPECT_EQ((*image)->height(), 2);
  EXPECT_EQ(pixelsOf(**image), rgba);
  EXPECT_FALSE((*image)->animation());

  const auto opaque = decoder_->decode(pngFile(2, 1, 3, {1, 2, 3, 4, 5, 6}), 6);
  ASSERT_TRUE(opaque);
  EXPECT_EQ(pixelsOf(**opaque), (Pixels{1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST_F(DecodeTest, ASquareIsThePicturesMiddleAndNeverLarger) {
  Pixels pixels;
  for (int at = 0; at < 12 * 4; ++at) {
    const bool middle = at % 12 >= 4 && at % 12 < 8;
    const std::uint8_t shade = middle ? 200 : 0;
    pixels.insert(pixels.end(), {shade, shade, shade, 255});
  }
  const ui::Image wide(12, 4, pixels);
  for (const auto& [longest, side] : {std::pair{2, 2}, {100, 4}, {4, 4}}) {
    const auto png = posix::squarePng(wide, longest);
    ASSERT_TRUE(png) << png.error().description;
    const auto square = decoder_->decode(*png, 100);
    ASSERT_TRUE(square);
    EXPECT_EQ((*square)->width(), side);
    EXPECT_EQ((*square)->height(), side);
    for (std::size_t at = 0; at < pixelsOf(**square).size(); at += 4)
      EXPECT_EQ(pixelsOf(**square)[at], 200) << longest;
  }
  EXPECT_FALSE(posix::squarePng(wide, 0));
  EXPECT_FALSE(posix::squarePng({0, 0, {}}, 4));
  EXPECT_FALSE(posix::squarePng(wide, 4, {.libraryName = "nowhere.so"}));
}

TEST(Orientation, PutsThePixelsWhereTheyAreToBeSeen) {
  // The file's pixels are abc/def.
  const char* pictures[] = {"abcdef", "cbafed", "fedcba", "defabc", "adbecf", "daebfc", "fcebda", "cfbead"};
  for (int orientation = 0; orientation <= 9; ++orientation) {
    const auto placed = posix::placementOf(orientation, 3, 2);
    std::string picture(6, '.');
    for (int y = 0; y < 2; ++y) {
      for (int x = 0; x < 3; ++x)
        picture[static_cast<std::size_t>(placed.first + x * placed.right + y * placed.down)] =
            static_cast<char>('a' + y * 3 + x);
    }
    const bool known = orientation >= 1 && orientation <= 8;
    EXPECT_EQ(picture, pictures[known ? orientation - 1 : 0]) << orientation;
    EXPECT_EQ(placed.width, known && orientation >= 5 ? 2 : 3);
  }
}

TEST_F(DecodeTest, APhotographIsShownAsItWasTaken) {
  std::string jpeg = greyJpegFile(64, 32);
  using namespace std::string_literals;
  const auto exif =
      "\xff\xe1\x00\x22"
      "Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0"s;
  jpeg.insert(2, exif);
  const auto image = decoder_->decode(jpeg, limit);
  ASSERT_TRUE(image);
  EXPECT_EQ((*image)->width(), 32);
  EXPECT_EQ((*image)->height(), 64);
}

TEST_F(DecodeTest, LargeJpegsAreDecodedSmallerAndOtherFormatsRefused) {
  const std::string jpeg = greyJpegFile(1001, 800);
  const struct {
    std::int64_t limit;
    int width, height;
  } sizes[] = {{1001 * 800, 1001, 800}, {1001 * 800 - 1, 501, 400}, {100'000, 251, 200}, {12'600, 126, 100}};
  for (const auto& size : sizes) {
    const auto image = decoder_->decode(jpeg, size.limit);
    ASSERT_TRUE(image) << image.error().description;
    EXPECT_EQ((*image)->width(), size.width);
    EXPECT_EQ((*image)->height(), size.height);
    const auto pixels = (*image)->pixels();
    for (std::size_t i = 0; i < pixels.size(); ++i) ASSERT_EQ(pixels[i], i % 4 == 3 ? 255 : 128) << i;
  }
  EXPECT_FALSE(decoder_->decode(jpeg, 12'599)) << "an eighth is the smallest that there is";
  EXPECT_FALSE(decoder_->decode(greyJpegFile(1001, 800, '\xc2'), 1001 * 800 - 1)) << "coefficients are kept";
  EXPECT_FALSE(decoder_->decode(greyJpegFile(65'000, 65'000), limit));
  EXPECT_FALSE(decoder_->decode(pngFile(30'000, 30'000, 4, {}), limit));
  EXPECT_FALSE(decoder_->decode(pngFile(3, 2, 4, gradient(6, 4)), 5));
  for (const std::string& bytes : {std::string(), std::string("x"), std::string(1 << 20, '\0')})
    EXPECT_FALSE(decoder_->decode(bytes, limit));
}

TEST_F(DecodeTest, AFileThatIsCutOffShowsWhatItHoldsAndNothingElse) {
  const auto rgba = gradient(40 * 30, 4);
  cutEverywhere(pngFile(40, 30, 4, rgba), rgba, 7);
  const std::string bmp = bitmapFile(16, 16, gradient(16 * 16, 3));
  const auto whole = decoder_->decode(bmp, limit);
  ASSERT_TRUE(whole);
  cutEverywhere(bmp, pixelsOf(**whole), 5);
  Pixels grey(64 * 64 * 4, 128);
  for (std::size_t i = 3; i < grey.size(); i += 4) grey[i] = 255;
  const auto image = decoder_->decode(greyJpegFile(64, 64), limit);
  ASSERT_TRUE(image);
  EXPECT_EQ(shownOf(**image, grey), 64U * 64U);
  const std::string jpeg = greyJpegFile(64, 64);
  for (std::size_t size = 0; size < jpeg.size(); ++size) {
    if (const auto cut = decoder_->decode(jpeg.substr(0, size), limit)) shownOf(**cut, grey);
  }
}

TEST_F(DecodeTest, DamagedPicturesStayWithinTheirBounds) {
  std::mt19937 random(5);
  const std::string files[] = {pngFile(40, 30, 4, gradient(1200, 4)), greyJpegFile(64, 64),
                               bitmapFile(16, 16, gradient(256, 3))};
  int decoded = 0;
  for (int round = 0; round < 900; ++round) {
    std::string bytes = files[round % 3];
    for (int i = 0; i < 3; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
    const auto image = decoder_->decode(bytes, limit);
    if (!image) continue;
    ++decoded;
    const auto count = std::int64_t{(*image)->width()} * (*image)->height();
    EXPECT_LE(count, limit);
    EXPECT_EQ((*image)->pixels().size(), static_cast<std::size_t>(count) * 4);
  }
  EXPECT_GT(decoded, 0);
}

}  // namespace
}  // namespace VorselKelp::testing_support
