#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "posix/support/ChildProcess.h"
#include "posix/support/PictureFiles.h"

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
  const auto decoder = posix::makeImageDecoder();
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

TEST(ImageDecoderTest, APictureInPiecesIsReadNoFurtherThanItsSize) {
  const auto decoder = posix::makeImageDecoder();
  // A JPEG is known at its scan, and comments without end may stand before that.
  std::string late = jpeg(3, 2);
  const auto scan = late.find("\xff\xda");
  const std::string comment = std::string("\xff\xfe\xff\xff", 4) + std::string(65'533, 'c');
  for (int i = 0; i < 40; ++i) late.insert(scan, comment);
  late += std::string(1 << 20, 'x');
  std::size_t at = 0;
  const auto next = [&] {
    const auto piece = std::string_view(late).substr(std::min(at, late.size()), 50'000);
    at += piece.size();
    return piece;
  };
  const auto info = decoder->inspectPieces(next, 6);
  ASSERT_TRUE(info) << info.error().description;
  EXPECT_EQ(info->width * 10 + info->height, 32);
  EXPECT_GT(at, 40 * comment.size());
  EXPECT_LT(at, 41 * comment.size());
  at = late.size();
  EXPECT_FALSE(decoder->inspectPieces(next, 6)) << "no pieces at all";
}

TEST(ImageDecoderTest, WhatStandsBeforeThePixelsDoesNotMatter) {
  const auto decoder = posix::makeImageDecoder();
  std::string photo = jpeg(3, 2);
  photo.insert(2, std::string("\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0\xff\xff\xff\xfe\0\2??\xff\0", 29));
  std::string drawing = png(3, 2);
  drawing.insert(33, pngChunk("tEXt", "a\xff\xd8 IDAT") + pngChunk("gAMA", std::string("\0\0\xb1\x8f", 4)));
  for (const auto* picture : {&photo, &drawing}) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{3}, picture->size()}) {
      std::string_view rest = *picture;
      const auto next = [&] {
        const auto piece = rest.substr(0, size);
        rest.remove_prefix(piece.size());
        return piece;
      };
      const auto info = decoder->inspectPieces(next, 6);
      ASSERT_TRUE(info) << size << ": " << info.error().description;
      EXPECT_EQ(info->width * 10 + info->height, 32);
    }
  }
}

TEST(ImageDecoderTest, CommentsWithoutEndNeedNoMemory) {
  const std::string comment = std::string("\xff\xfe\xff\xff", 4) + std::string(65'533, 'c');
  const std::string text = pngChunk("tEXt", "k" + std::string(1, '\0') + std::string(60'000, 't'));
  for (const auto& [beginning, piece] :
       {std::pair(jpeg(3, 2).substr(0, 2), comment), {png(3, 2).substr(0, 33), text}}) {
    ChildProcess child([&] {
      const auto decoder = posix::makeImageDecoder();
      (void)decoder->inspect(beginning + piece, noLimit);  // loads the libraries
      rusage before{}, after{};
      ::getrusage(RUSAGE_SELF, &before);
      int left = 1000;
      bool first = true;
      const auto next = [&]() -> std::string_view {
        if (std::exchange(first, false)) return beginning;
        return left-- > 0 ? std::string_view(piece) : std::string_view();
      };
      const bool refused = !decoder->inspectPieces(next, noLimit);
      ::getrusage(RUSAGE_SELF, &after);
      return refused && left < 0 && after.ru_maxrss - before.ru_maxrss < 10'000;
    });
    EXPECT_TRUE(child.succeeded()) << beginning.size();
  }
}

TEST(ImageDecoderTest, AGiantNeedsNoMemoryAndIsRefused) {
  const auto decoder = posix::makeImageDecoder();
  EXPECT_FALSE(decoder->inspect(png(900'000, 900'000), 20'000'000));
  EXPECT_FALSE(decoder->inspect(gif(65'535, 65'535), 20'000'000));
  EXPECT_FALSE(decoder->inspect(jpeg(65'000, 65'000), 20'000'000));
}

TEST(ImageDecoderTest, WhatIsNoPictureIsAnErrorThatSaysSo) {
  const auto decoder = posix::makeImageDecoder();
  for (const std::string& bytes : {std::string(), std::string("<!doctype html>"), std::string(1 << 20, '\0'),
                                   png(0, 0), std::string("\x89PNG\r\n\x1a\n"), std::string("GIF89a")}) {
    const auto info = decoder->inspect(bytes, noLimit);
    ASSERT_FALSE(info) << bytes.substr(0, 20);
    EXPECT_FALSE(info.error().description.empty());
  }
}

TEST(ImageDecoderTest, DamagedPicturesAnswerWithoutACrash) {
  const auto decoder = posix::makeImageDecoder();
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
  const auto decoder = posix::makeImageDecoder({"libof-no-such-name.so.1"});
  const auto info = decoder->inspect(png(1, 1), noLimit);
  ASSERT_FALSE(info);
  EXPECT_NE(info.error().description.find("libof-no-such-name"), std::string::npos);
}

}  // namespace
}  // namespace VorselKelp::testing_support
