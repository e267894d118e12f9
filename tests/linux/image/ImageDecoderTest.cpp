#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "VorselKelpLinux/PixbufImageDecoder.h"
#include "linux/support/PictureFiles.h"

namespace VorselKelp::testing_support {
namespace {

constexpr std::int64_t noLimit = std::int64_t{1} << 62;

/// Says what it likes of its size; its pixels are the first row of a stored block and end there.
std::string png(std::uint32_t width, std::uint32_t height) {
  const std::string header = bigEndian(width) + bigEndian(height) + std::string("\x08\x00\x00\x00\x00", 5);
  return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", header) +
         pngChunk("IDAT", std::string("\x78\x01\x00\x02\x00\xfd\xff\0\0", 9));
}

std::string gif(std::uint32_t width, std::uint32_t height) {
  const std::string size = littleEndian(width, 2) + littleEndian(height, 2);
  const std::string screen = size + std::string("\x80\x00\x00\x00\x00\x00\xff\xff\xff", 9);
  const std::string frame = std::string(",\0\0\0\0", 5) + size + std::string("\0\x02\x02\x44\x01\0;", 7);
  return "GIF89a" + screen + frame;
}

std::string jpeg(std::uint32_t width, std::uint32_t height) {
  std::string frame("\xff\xc0\x00\x0b\x08", 5);
  frame += bigEndian(height << 16 | width) + std::string("\x01\x01\x11\x00", 4);
  std::string table("\xff\xdb\x00\x43\x00", 5);
  table += std::string(64, '\x01');
  return std::string("\xff\xd8", 2) + table + frame +
         std::string("\xff\xda\x00\x08\x01\x01\x00\x00\x3f\x00", 10) + std::string(64, '\0') + "\xff\xd9";
}

TEST(ImageDecoderTest, TellsFormatAndSizeOfSmallAndLargePictures) {
  const auto decoder = linux_platform::makeImageDecoder();
  const struct {
    std::string bytes, extension;
    int width, height;
  } pictures[] = {
      {png(3, 2), "png", 3, 2},
      {gif(3, 2), "gif", 3, 2},
      {jpeg(3, 2), "jpg", 3, 2},
      {png(3, 2) + std::string(100'000, 'x'), "png", 3, 2},
      {gif(3, 2) + std::string(100'000, 'x'), "gif", 3, 2},
      {jpeg(3, 2) + std::string(100'000, 'x'), "jpg", 3, 2},
  };
  for (const auto& picture : pictures) {
    const auto info = decoder->inspect(picture.bytes, 6);
    ASSERT_TRUE(info) << picture.extension << ": " << info.error().description;
    EXPECT_EQ(info->fileExtension, picture.extension);
    EXPECT_EQ(info->width, picture.width);
    EXPECT_EQ(info->height, picture.height);
    EXPECT_FALSE(decoder->inspect(picture.bytes, 5));
  }
}

TEST(ImageDecoderTest, AGiantNeedsNoMemoryAndIsRefused) {
  const auto decoder = linux_platform::makeImageDecoder();
  EXPECT_FALSE(decoder->inspect(png(900'000, 900'000), 20'000'000));
  EXPECT_FALSE(decoder->inspect(gif(65'535, 65'535), 20'000'000));
  EXPECT_FALSE(decoder->inspect(jpeg(65'000, 65'000), 20'000'000));
}

TEST(ImageDecoderTest, WhatIsNoPictureIsAnErrorThatSaysSo) {
  const auto decoder = linux_platform::makeImageDecoder();
  for (const std::string& bytes : {std::string(), std::string("<!doctype html>"), std::string(1 << 20, '\0'),
                                   png(0, 0), std::string("\x89PNG\r\n\x1a\n"), std::string("GIF89a")}) {
    const auto info = decoder->inspect(bytes, noLimit);
    ASSERT_FALSE(info) << bytes.substr(0, 20);
    EXPECT_FALSE(info.error().description.empty());
  }
}

TEST(ImageDecoderTest, DamagedPicturesAnswerWithoutACrash) {
  const auto decoder = linux_platform::makeImageDecoder();
  std::mt19937 random(7);
  int answers = 0;
  for (int round = 0; round < 600; ++round) {
    std::string bytes = round % 3 == 0 ? png(40, 30) : round % 3 == 1 ? gif(40, 30) : jpeg(40, 30);
    for (int i = 0; i < 3; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
    bytes.resize(random() % bytes.size() + 1);
    const auto info = decoder->inspect(bytes, 20'000'000);
    answers += info && info->width > 0 ? 1 : 0;
  }
  EXPECT_GT(answers, 0);
  EXPECT_LT(answers, 600);
}

TEST(ImageDecoderTest, AMissingLibraryIsAnError) {
  const auto decoder = linux_platform::makeImageDecoder({"libof-no-such-name.so.1"});
  const auto info = decoder->inspect(png(1, 1), noLimit);
  ASSERT_FALSE(info);
  EXPECT_NE(info.error().description.find("libof-no-such-name"), std::string::npos);
}

}  // namespace
}  // namespace VorselKelp::testing_support
