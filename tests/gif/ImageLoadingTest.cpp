#include "gif/ImageLoading.h"

#include <gtest/gtest.h>

#include "VorselKelpTesting/HeaderImageDecoder.h"

namespace VorselKelp::gif {
namespace {

using namespace testing_platform;

TEST(ImageLoadingTest, OnlyAGifOfSeveralFramesKeepsItsBytes) {
  HeaderImageDecoder decoder;
  const HeaderImageDecoder::Frame frame{0, 0, 1, 1, {0}, {{1, 2, 3}}, {}, {}, 5};
  const auto animation = [&](const std::string& bytes) -> std::shared_ptr<const std::string> {
    const auto image = decodeImage(decoder, bytes);
    EXPECT_TRUE(image);
    return image ? (*image)->animation() : nullptr;
  };
  EXPECT_FALSE(animation(gifBeginning(3, 2))) << "no frame could be read";
  decoder.setFrames({frame}, 0);
  EXPECT_FALSE(animation(gifBeginning(3, 2)));
  decoder.setFrames({frame, frame}, 0);
  EXPECT_FALSE(animation(pngBeginning(3, 2)));
  const auto bytes = animation(gifBeginning(3, 2));
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, gifBeginning(3, 2));
  EXPECT_FALSE(decodeImage(decoder, gifBeginning(65'535, 65'535)));
  EXPECT_FALSE(decodeImage(decoder, ""));
}

}  // namespace
}  // namespace VorselKelp::gif
