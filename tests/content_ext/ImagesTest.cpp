#include <thread>

#include "content_ext/CarouselTest.h"
#include "content_ext/ImageCache.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* failed = "Image cant download from G+ or fb server";

using ImagesTest = CarouselTest;

TEST_F(ImagesTest, EveryImageIsFetchedAheadOnceWhateverLayoutDoes) {
  const auto view = make();
  EXPECT_THAT(newUrls(), ElementsAre("https://i/0", "https://i/1", "https://i/2"));
  for (const auto& request : extension_.urlSession->requests())
    EXPECT_EQ(request.responseLimit, std::size_t{10} << 20);
  view->performLayout();
  view->performLayout();
  EXPECT_THAT(newUrls(), IsEmpty());
  answer("https://i/1", picture(21, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 0);
  EXPECT_EQ(widthOf(view->cachedImage("https://i/1")), 21);
  answer("https://i/0", picture(20, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 20);
  view->rightButton->tap();
  EXPECT_EQ(widthOf(view->imageView->image), 21) << "at once";
  view->imageView->image = ui::ImagePtr();
  view->performLayout();
  EXPECT_EQ(widthOf(view->imageView->image), 21) << "though somebody took it away";
}

TEST_F(ImagesTest, WhatMadeRoomForAnotherPictureIsFetchedAgain) {
  const auto view = shown();
  for (unsigned k = 0; k < 3; ++k) {
    answer("https://i/" + std::to_string(k), picture(1500 + k, 2000));
    view->rightButton->tap();
  }
  answer("https://i/0", picture(1500, 2000));
  EXPECT_EQ(widthOf(view->imageView->image), 1500);
}

TEST_F(ImagesTest, ALateImageIsKeptAndShownOnlyUnderItsOwnMessage) {
  const auto view = shown();
  answer("https://i/0", picture(20, 1));
  view->rightButton->tap();
  view->performLayout();
  EXPECT_EQ(widthOf(view->imageView->image), 20) << "the one before stays until the new one comes";
  view->rightButton->tap();
  answer("https://i/1", picture(21, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 20) << "never one that nobody asks for now";
  answer("https://i/2", picture(22, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 22);
  view->leftButton->tap();
  EXPECT_EQ(widthOf(view->imageView->image), 21);
}

TEST_F(ImagesTest, PagingBackToThePictureThatStayedKeepsALateOneAway) {
  const auto view = shown();
  answer("https://i/0", picture(20, 1));
  view->rightButton->tap();
  view->leftButton->tap();
  answer("https://i/1", picture(21, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 20);
}

TEST_F(ImagesTest, OnlyThePictureOnShowWaitsForABusyMainThread) {
  const auto view = shown();
  view->rightButton->tap();
  for (std::size_t number = 0; number < 3; ++number)
    extension_.urlSession->answer(number, picture(20 + static_cast<unsigned>(number), 1));
  EXPECT_EQ(extension_.mainQueue->waiting(), 1u);
  view->rightButton->tap();
  extension_.settle();
  EXPECT_EQ(widthOf(view->imageView->image), 22) << "the one that waited is asked for no more";
}

TEST_F(ImagesTest, AGifPlaysWhileItsMessageIsShown) {
  const testing_platform::HeaderImageDecoder::Frame frame{0, 0, 1, 1, {0}, {{}}, {}, {}, 10};
  extension_.imageDecoder->setFrames({frame, frame, frame}, 0);
  auto& screen = *device_->screen;
  const auto view = shown();
  answer("https://i/0", status(200, testing_platform::gifBeginning(1, 1)));
  answer("https://i/1", picture(21, 1));
  const auto plays = [&](double from) {
    screen.refresh(from);
    const auto first = view->imageView->image.get();
    view->performLayout();
    screen.refresh(from + 0.11);
    return view->imageView->image.get() != first;
  };
  EXPECT_TRUE(plays(1));
  view->rightButton->tap();
  EXPECT_EQ(screen.runningLinks(), 0u);
  EXPECT_FALSE(plays(2));
  EXPECT_EQ(widthOf(view->imageView->image), 21);
  view->leftButton->tap();
  EXPECT_TRUE(plays(3));
}

TEST_F(ImagesTest, AFailureIsPrintedWhereItIsSeenAndTriedAgain) {
  const auto view = shown();
  answer("https://i/1", testing_platform::ServerAnswer::failure("offline"));
  EXPECT_THAT(extensionLines(), IsEmpty());
  answer("https://i/0", testing_platform::ServerAnswer::failure("offline"));
  EXPECT_THAT(extensionLines(), ElementsAre(failed));
  for (const auto& without :
       {status(204), status(404, "<html>"), status(503, testing_platform::pngBeginning(9, 9))}) {
    view->performLayout();
    answer("https://i/0", without);
    EXPECT_EQ(view->imageView->image.get(), nullptr);
  }
  EXPECT_THAT(extensionLines(), ElementsAre(failed, failed, failed, failed));
  view->performLayout();
  answer("https://i/0", picture(20, 1));
  view->rightButton->tap();
  answer("https://i/1", testing_platform::ServerAnswer::failure("offline"));
  EXPECT_EQ(widthOf(view->imageView->image), 20) << "a failure leaves the view as it was";
  view->performLayout();
  answer("https://i/1", picture(21, 1));
  EXPECT_EQ(widthOf(view->imageView->image), 21);
}

TEST_F(ImagesTest, WhatIsNoPictureIsFetchedOnce) {
  const auto view = shown();
  for (const auto& bytes : {std::string("x"), testing_platform::pngBeginning(30000, 30000),
                            std::string((std::size_t{10} << 20) + 1, 'x')}) {
    const std::string url = "https://i/" + std::to_string(view->position());
    answer(url, status(200, bytes));
    EXPECT_EQ(view->cachedImage(url), nullptr);
    EXPECT_EQ(view->imageView->image.get(), nullptr);
    view->rightButton->tap();
  }
  newUrls();
  for (int i = 0; i < 3; ++i) view->rightButton->tap();
  EXPECT_THAT(newUrls(), ElementsAre("https://i/2")) << "the one that was too large to come";
  EXPECT_THAT(extensionLines(), ElementsAre(failed));
  answer("https://i/2", picture(22, 1));
  view->leftButton->tap();
  EXPECT_EQ(widthOf(view->imageView->image), 22);
  view->rightButton->tap();
  EXPECT_EQ(view->imageView->image.get(), nullptr) << "not the picture of another message";
}

TEST_F(ImagesTest, AnswersAfterTheViewHasGoneHarmNobody) {
  auto view = shown();
  const std::weak_ptr<ui::View> gone = view;
  auto& session = *extension_.urlSession;
  session.answer(0, picture(20, 1));  // its way to the main queue begins
  view->removeFromSuperview();
  view.reset();
  EXPECT_TRUE(gone.expired());
  extension_.settle();
  answer("https://i/1", picture(20, 1));
  answer("https://i/2", testing_platform::ServerAnswer::failure("offline"));
  EXPECT_THAT(extensionLines(), IsEmpty());
}

TEST_F(ImagesTest, PicturesArriveOnAnotherThreadWhileTheUserPages) {
  std::string messages;
  for (int i = 0; i < 50; ++i)
    messages += (i ? "," : "") + (R"({"o":{"image":"https://i/)" + std::to_string(i) + R"("}})");
  const auto view = shown(R"({"p":[)" + messages + R"(],"isMultiple":true})");
  std::thread delegateQueue([&] {
    for (std::size_t number = 0; number < 50; ++number)
      extension_.urlSession->answer(number, picture(100 + static_cast<unsigned>(number), 10));
  });
  for (int i = 0; i < 50; ++i) view->rightButton->tap();
  delegateQueue.join();
  extension_.settle();
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(widthOf(view->imageView->image), 100 + static_cast<int>(view->position()));
    view->rightButton->tap();
  }
}

ui::ImagePtr image(std::size_t bytes) {
  return std::make_shared<ui::Image>(static_cast<int>(bytes / 4), 1, std::vector<std::uint8_t>(bytes));
}

TEST(ImageCache, StaysWithinItsBudgetAndKeepsWhatIsShown) {
  ImageCache cache(100);
  cache.keepIfRoom("a", image(40));
  cache.keepIfRoom("b", image(60));
  cache.keepIfRoom("c", image(40));
  EXPECT_FALSE(cache.find("c")) << "what was fetched first is needed first";
  EXPECT_TRUE(cache.find("a"));
  cache.keep("c", image(40));
  EXPECT_FALSE(cache.find("b")) << "not asked for longest";
  EXPECT_TRUE(cache.find("a") && cache.find("c"));
  cache.keep("c", image(60));
  EXPECT_TRUE(cache.find("a")) << "the smaller one it replaces counts no more";
  cache.keep("huge", image(400));
  EXPECT_TRUE(cache.find("huge"));
  EXPECT_FALSE(cache.find("a") || cache.find("c"));
  cache.keep("d", image(100));
  EXPECT_FALSE(cache.find("huge"));
  const auto animation = std::make_shared<const std::string>(101, 'x');
  cache.keepIfRoom("gif", std::make_shared<ui::Image>(1, 1, std::vector<std::uint8_t>(4), animation));
  EXPECT_FALSE(cache.find("gif"));
}

}  // namespace
}  // namespace VorselKelp
