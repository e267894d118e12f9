#include "ads/InterstitialTest.h"

#include <string>
#include <tuple>
#include <vector>

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testing_platform::ServerAnswer;
using ui::Attribute;
using ui::DeviceOrientation;

TEST_F(InterstitialTest, TheLayoutFollowsTheOrientation) {
  using Line = std::tuple<Attribute, Attribute, double>;
  const auto lines = [](ITIView& view, const std::shared_ptr<ui::View>& part) {
    std::vector<Line> all;
    for (const auto& c : view.constraints()) {
      EXPECT_EQ(c.constant, 0);
      EXPECT_FALSE(c.againstConstant);
      if (c.first.view.lock() != part) continue;
      const auto other = c.second.view.lock();
      // A multiplier of 0 stands for the neighbour's line instead of the container's.
      all.emplace_back(c.first.attribute, c.second.attribute, other.get() == &view ? c.multiplier : 0.0);
    }
    return all;
  };
  for (const auto orientation :
       {DeviceOrientation::portrait, DeviceOrientation::portraitUpsideDown, DeviceOrientation::landscapeLeft,
        DeviceOrientation::landscapeRight, DeviceOrientation::faceUp, DeviceOrientation::unknown}) {
    const auto view = ITIView::create(core_.context, {{0, 0}, {10, 10}}, orientation, AdexObject{});
    const Line top{Attribute::top, Attribute::top, 1}, leading{Attribute::leading, Attribute::leading, 1},
        bottom{Attribute::bottom, Attribute::bottom, 1},
        trailing{Attribute::trailing, Attribute::trailing, 1};
    const auto picture = lines(*view, view->imageView()), words = lines(*view, view->textView());
    if (orientation <= DeviceOrientation::portraitUpsideDown && orientation != DeviceOrientation::unknown) {
      EXPECT_THAT(picture, UnorderedElementsAre(top, leading, trailing,
                                                Line{Attribute::height, Attribute::height, 0.5}));
      EXPECT_THAT(
          words, UnorderedElementsAre(Line{Attribute::top, Attribute::bottom, 0}, leading, bottom, trailing));
    } else {
      EXPECT_THAT(picture,
                  UnorderedElementsAre(top, leading, bottom, Line{Attribute::width, Attribute::width, 0.5}));
      EXPECT_THAT(words, UnorderedElementsAre(Line{Attribute::leading, Attribute::trailing, 0}, top, bottom,
                                              trailing));
    }
    EXPECT_FALSE(view->imageView()->translatesAutoresizingMaskIntoConstraints);
    EXPECT_FALSE(view->textView()->translatesAutoresizingMaskIntoConstraints);
  }
}

TEST_F(InterstitialTest, ThePictureComesOverTheMainQueueOrItsErrorIsWritten) {
  const auto loading = [&] {
    const auto ad = make();
    adArrives(R"("img":"https://i.example/a.png")");
    EXPECT_EQ(session().urls().back(), "https://i.example/a.png");
    return ad;
  };
  const auto image = [](const std::shared_ptr<InterstitialAD>& ad) {
    return itiOf(*ad->interstitialController()).imageView()->image.get();
  };
  auto ad = loading();
  EXPECT_EQ(session().requests().back().responseLimit, std::size_t{10} << 20);
  answer(status(200, testing_platform::pngBeginning(3, 2)));
  EXPECT_FALSE(image(ad));
  app_.mainQueue->runUntilIdle();
  ASSERT_TRUE(image(ad));
  EXPECT_EQ(image(ad)->width(), 3);

  ad = loading();
  app_.console->clear();
  answer(ServerAnswer::failure("down"));
  app_.mainQueue->runUntilIdle();
  EXPECT_THAT(app_.console->texts(), ElementsAre("downERROREEERR"));
  EXPECT_FALSE(image(ad));
  for (const auto& broken : {status(404, testing_platform::pngBeginning(3, 2)), status(200, "no picture"),
                             status(200, testing_platform::pngBeginning(30'000, 30'000)), status(204)}) {
    ad = loading();
    answer(broken);
    app_.mainQueue->runUntilIdle();
    EXPECT_FALSE(image(ad));
  }
  ad = loading();
  ad.reset();
  answer(status(200, testing_platform::pngBeginning(3, 2)));
  EXPECT_EQ(app_.mainQueue->runUntilIdle(), 0u) << "nobody to show it to";
}

TEST_F(InterstitialTest, AnAnimatedPicturePlaysUntilTheAdIsClosedAndWhenItIsShownAgain) {
  const testing_platform::HeaderImageDecoder::Frame frame{0, 0, 1, 1, {0}, {{}}, {}, {}, 10};
  app_.imageDecoder->setFrames({frame, frame}, 0);
  const auto running = [&] { return app_.device->screen->runningLinks(); };
  const std::string gif = testing_platform::gifBeginning(1, 1);
  auto ad = make();
  adArrives(R"("img":"https://i.example/a.gif")");
  auto& early = itiOf(*ad->interstitialController());
  answer(status(200, gif));
  app_.mainQueue->runUntilIdle();
  const std::weak_ptr<const std::string> file = early.imageView()->image.get()->animation();
  EXPECT_EQ(running(), 1u);
  present(ad);
  ad->interstitialController()->closeAd();
  EXPECT_EQ(running(), 0u);
  EXPECT_TRUE(early.imageView()->image.get()) << "the ad keeps its picture";
  present(ad);
  EXPECT_EQ(running(), 1u);
  EXPECT_TRUE(ad->interstitialController()->accessibilityPerformEscape());
  ad.reset();
  EXPECT_TRUE(file.expired()) << "what a closed ad played goes with it";

  for (const bool adBeforeClosing : {true, false}) {
    ad = make();
    if (adBeforeClosing) adArrives(R"("img":"https://i.example/a.gif")");
    present(ad);
    ad->interstitialController()->closeAd();
    if (!adBeforeClosing) adArrives(R"("img":"https://i.example/a.gif")");
    answer(status(200, gif));
    app_.mainQueue->runUntilIdle();
    EXPECT_TRUE(itiOf(*ad->interstitialController()).imageView()->image.get());
    EXPECT_EQ(running(), 0u) << adBeforeClosing;
    present(ad);
    EXPECT_EQ(running(), 1u) << adBeforeClosing;
    app_.presenter->dismiss(root_->presentedViewController(), false);
  }
}

}  // namespace
}  // namespace VorselKelp
