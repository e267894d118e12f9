#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/InterstitialAD.h"
#include "ads/ITIView.h"
#include "core/TestCore.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using testing_platform::ServerAnswer;
using ui::Attribute;
using ui::DeviceOrientation;

class Listener final : public InterstitialDelegate {
 public:
  void interstitialDidReceiveAd(const Ad& ad) override { hear("received", ad); }
  void interstitialViewDidFailToReceiveAdWithError(const Ad& ad, const std::optional<Error>& error) override {
    hear("failed " + (error ? error->description : std::string("silently")), ad);
  }
  void interstitialWillPresentScreen(const Ad& ad) override { hear("will present", ad); }
  void interstitialWillDismissScreen(const Ad& ad) override { hear("will dismiss", ad); }
  void interstitialWillLeaveApplication(const Ad& ad) override { hear("will leave", ad); }
  void interstitialClosed(const Ad& ad) override { hear("closed", ad); }

  std::vector<std::string> heard;

 private:
  void hear(const std::string& what, const Ad& ad) {
    heard.push_back(what + " " + (ad ? ad->adId() : std::string("nobody")));
  }
};

class InterstitialTest : public testing::Test {
 protected:
  InterstitialTest() {
    app_.bundle->setMain("VorselKellpTrackID", "feed-7");
    app_.presenter->setRootViewController(root_);
  }

  std::shared_ptr<InterstitialAD> make(DeviceOrientation orientation = DeviceOrientation::portrait) {
    auto values = app_.device->hardware->values();
    values.orientation = orientation;
    app_.device->hardware->set(values);
    auto ad = InterstitialAD::create(core_.context, "slot");
    ad->setInterstitialDelegate(listener_);
    return ad;
  }
  /// The feed answers the oldest request with an ad whose creative has these members.
  void adArrives(const std::string& creative) {
    answer(status(200, R"({"items":[{"md":{)" + creative + "}}]}"));
    app_.mainQueue->runUntilIdle();
  }
  void answer(const ServerAnswer& with) {
    ASSERT_FALSE(session().unanswered().empty());
    session().answer(session().unanswered().front(), with);
  }
  void present(const std::shared_ptr<InterstitialAD>& ad) {
    app_.presenter->present(ad->interstitialController(), root_, true);
  }
  static ITIView& itiOf(const InterstitialController& controller) {
    return static_cast<ITIView&>(*controller.iti());
  }
  testing_platform::MemoryURLSession& session() { return *app_.urlSession; }
  std::vector<std::string> heard() { return std::exchange(listener_->heard, {}); }

  TestCore core_;
  testing_platform::MemoryPlatform& app_ = core_.app;
  std::shared_ptr<ui::ViewController> root_ = std::make_shared<ui::ViewController>();
  std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

TEST_F(InterstitialTest, ANewAdIsRequestedAndItsScreenPrepared) {
  app_.device->screen->set(390.9, 844.2);
  const auto ad = make();
  auto& controller = *ad->interstitialController();
  ASSERT_EQ(session().urls().size(), 1u);
  EXPECT_THAT(session().urls()[0], testing::HasSubstr("/v1/display/feed-7?page=com.vorsel.demo&sr=390x844&"));
  EXPECT_THAT(session().urls()[0], testing::HasSubstr("&as=slot&"));
  EXPECT_EQ(controller.interstitialAd(), ad);
  EXPECT_EQ(controller.adId(), "slot");
  EXPECT_TRUE(controller.modalPresentationCapturesStatusBarAppearance);
  EXPECT_TRUE(controller.prefersStatusBarHidden());
  EXPECT_FALSE(controller.isReady);

  app_.device->screen->set(1, 1);
  EXPECT_EQ(controller.imageView()->frame.get(), (ui::Rect{{0, 0}, {390.9, 844.2}}));
  EXPECT_EQ(controller.screenHeight(), 844.2) << "as it was at first use";
  auto& button = *controller.closeButton();
  EXPECT_EQ(button.title.get(), "X");
  EXPECT_EQ(button.alpha, 0.6);
  EXPECT_EQ(button.backgroundColor.get(), ui::Color::white());
  EXPECT_EQ(std::pair(button.borderWidth.get(), button.borderColor.get()),
            std::pair(1.0, ui::Color::black()));
  EXPECT_EQ(button.cornerRadius, 5);
  EXPECT_THAT(controller.view()->subviews(), ElementsAre(controller.imageView(), controller.closeButton()));
  const auto& held = controller.view()->constraints();
  ASSERT_EQ(held.size(), 2u);
  for (const auto& constraint : held) {
    EXPECT_EQ(constraint.first.view.lock(), controller.closeButton());
    EXPECT_EQ(constraint.second.view.lock(), controller.view());
    EXPECT_EQ(constraint.first.attribute, constraint.second.attribute);
    EXPECT_EQ(constraint.constant, 16);
  }
  EXPECT_EQ(held[0].first.attribute, Attribute::top);
  EXPECT_EQ(held[1].first.attribute, Attribute::leading);
}

TEST_F(InterstitialTest, TheAdJoinsBeneathTheCloseButtonAndIsCounted) {
  const auto ad = make();
  auto& controller = *ad->interstitialController();
  answer(status(200, R"({"items":[{"md":{"title":"Buy","l2":"9","cpm_t":["https://m/${l2}","https://n"],)"
                     R"("cpv_t":["https://v"],"cpc_t":["https://c"]}}]})"));
  EXPECT_THAT(session().urls(), ElementsAre(testing::_, "https://m/9"));
  EXPECT_FALSE(controller.iti()) << "not before the main queue runs";
  app_.mainQueue->runUntilIdle();
  ASSERT_TRUE(controller.iti());
  EXPECT_THAT(controller.view()->subviews(),
              ElementsAre(controller.imageView(), controller.iti(), controller.closeButton()));
  EXPECT_EQ(controller.iti()->frame.get(), (ui::Rect{{0, 0}, {390, 844}}));
  EXPECT_EQ(itiOf(controller).textView()->text.get(), "Buy");
  EXPECT_THAT(heard(), IsEmpty());

  for (const auto& without :
       {status(200, "no JSON"), status(404), ServerAnswer::failure("down"), status(200, R"({"items":5})")}) {
    session().cancelAll();
    const auto other = make();
    answer(without);
    app_.mainQueue->runUntilIdle();
    EXPECT_FALSE(other->interstitialController()->iti());
  }
  session().cancelAll();
  const auto bare = make();
  answer(status(200, "{}"));
  app_.mainQueue->runUntilIdle();
  ASSERT_TRUE(bare->interstitialController()->iti()) << "an ad without items";
  EXPECT_EQ(itiOf(*bare->interstitialController()).textView()->text.get(), "");
  EXPECT_THAT(heard(), IsEmpty());
}

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

TEST_F(InterstitialTest, SupportedOrientationsFollowTheDeviceAtConstruction) {
  const unsigned upright = ui::interfacePortrait;
  const unsigned lying = ui::interfaceLandscapeLeft | ui::interfaceLandscapeRight;
  const struct {
    DeviceOrientation orientation;
    unsigned onTallScreen, onWideScreen;
  } cases[] = {
      {DeviceOrientation::portrait, upright, upright},
      {DeviceOrientation::portraitUpsideDown, upright, upright},
      {DeviceOrientation::faceUp, upright, lying},
      {DeviceOrientation::faceDown, upright, lying},
      {DeviceOrientation::landscapeLeft, lying, lying},
      {DeviceOrientation::landscapeRight, lying, lying},
      {DeviceOrientation::unknown, lying, lying},
  };
  for (const auto& c : cases) {
    const auto ad = make(c.orientation);
    (void)make(DeviceOrientation::unknown);  // the device turns
    auto& controller = *ad->interstitialController();
    app_.device->screen->set(390, 844);
    EXPECT_EQ(controller.supportedInterfaceOrientations(), c.onTallScreen);
    for (const double height : {390.0, 844.0}) {
      app_.device->screen->set(844, height);
      EXPECT_EQ(controller.supportedInterfaceOrientations(), c.onWideScreen) << "a square lies";
    }
  }
}

TEST_F(InterstitialTest, ShowAdPresentsNothingUnlessSomebodyMadeItReady) {
  const auto ad = make();
  ad->showAd();
  adArrives(R"("title":"t")");
  ad->showAd();
  EXPECT_THAT(app_.presenter->presentations(), IsEmpty());
  ad->interstitialController()->isReady = true;
  ad->showAd();
  ASSERT_EQ(app_.presenter->presentations().size(), 1u);
  EXPECT_TRUE(app_.presenter->presentations()[0].animated);
  EXPECT_EQ(root_->presentedViewController(), ad->interstitialController());
  EXPECT_EQ(ad->interstitialController()->modalPresentationStyle, ui::PresentationStyle::overFullScreen);
  EXPECT_EQ(app_.presenter->statusBarUpdates(), 1u);
  app_.presenter->setRootViewController(nullptr);
  EXPECT_DEATH(ad->showAd(), "Fatal error: InterstitialAD::showAd: .*root");
}

TEST_F(InterstitialTest, TapsOpenThePageOrCloseAndTheDelegateHears) {
  const auto ad = make();
  auto& controller = *ad->interstitialController();
  adArrives(R"("url":"https://click.example","title":"t")");
  present(ad);
  app_.console->clear();
  controller.iti()->tap();
  controller.imageView()->tap();
  EXPECT_THAT(heard(), ElementsAre("will present slot", "will present slot"));
  const std::string page = "https://ads.vorsel.example/demonstration";
  EXPECT_THAT(app_.application->openedURLs(), ElementsAre(page, page));
  EXPECT_THAT(app_.console->texts(), ElementsAre("Open Ad", "Open Ad"));

  app_.application->resignActive();
  controller.safariViewControllerDidFinish();
  controller.didReceiveInterstitialCLSR(ad);
  controller.interstitialFailedCLSR(ad, Error{"down"});
  EXPECT_THAT(heard(),
              ElementsAre("will leave slot", "will dismiss slot", "received slot", "failed down slot"));
  EXPECT_DEATH(controller.interstitialFailedCLSR(nullptr, std::nullopt), "Fatal error: InterstitialAD");

  controller.imageView()->image = std::make_shared<ui::Image>(1, 1, std::vector<std::uint8_t>(4));
  app_.console->clear();
  controller.closeButton()->tap();
  controller.closeButton()->tap();  // while the screen goes
  EXPECT_THAT(heard(), ElementsAre("closed slot"));
  EXPECT_THAT(app_.console->texts(), ElementsAre("CLOSE INTERSTITIAL AD"));
  EXPECT_EQ(controller.imageView()->image.get(), nullptr);
  EXPECT_FALSE(root_->presentedViewController());
  present(ad);
  controller.closeAd();
  EXPECT_THAT(heard(), ElementsAre("closed slot")) << "each time that it was shown";

  listener_.reset();
  controller.openAd();
  controller.interstitialFailedCLSR(ad, std::nullopt);
  EXPECT_EQ(app_.application->openedURLs().size(), 3u) << "nobody hears, and it works on";
}

TEST_F(InterstitialTest, WithoutAnOwnerEveryOperationStopsTheProcess) {
  const auto controller = InterstitialController::create(core_.context);
  EXPECT_THAT(session().urls(), IsEmpty());
  EXPECT_DEATH(controller->closeAd(), "Fatal error: InterstitialController::closeAd");
  EXPECT_DEATH(controller->openAd(), "Fatal error: InterstitialController::openAd");
  EXPECT_DEATH(controller->willLeaveApplication(), "Fatal error: .*willLeaveApplication");
  EXPECT_DEATH(controller->safariViewControllerDidFinish(), "Fatal error: .*safariViewController");
  controller->closeButton()->tap();  // not wired up before the view is there
  (void)controller->view();
  EXPECT_DEATH(controller->closeButton()->tap(), "Fatal error: .*closeAd");

  const auto orphan =
      std::static_pointer_cast<InterstitialController>(make()->interstitialController()->shared_from_this());
  EXPECT_DEATH(orphan->closeAd(), "Fatal error: .*closeAd");
  EXPECT_DEATH(app_.application->resignActive(), "Fatal error: .*willLeaveApplication");
}

TEST_F(InterstitialTest, OwnerAndControllerLiveAsLongAsTheyAreNeeded) {
  auto ad = make();
  std::weak_ptr<InterstitialController> controller = ad->interstitialController();
  const auto destroyed = [&] {
    return std::pair(app_.console->count("DEINITED VorselKelp.InterstitialAD"),
                     app_.console->count("InterstitialAD deinited"));
  };
  ad.reset();
  EXPECT_EQ(destroyed(), std::pair(1ul, 1ul)) << "with the request under way";
  answer(status(200, R"({"items":[{"md":{"l2":"9","cpm_t":["https://m/${l2}"]}}]})"));
  app_.mainQueue->runUntilIdle();
  EXPECT_EQ(session().urls().size(), 1u) << "what nobody will see is not counted";

  ad = make();
  auto held = ad->interstitialController();
  ad.reset();
  app_.application->resignActive();
  held->closeAd();
  EXPECT_THAT(heard(), ElementsAre("will leave slot", "closed slot")) << "who holds it holds the ad";
  held.reset();
  EXPECT_EQ(destroyed(), std::pair(2ul, 2ul));

  ad = make();
  controller = ad->interstitialController();
  present(ad);
  ad.reset();
  ASSERT_FALSE(controller.expired());
  ASSERT_TRUE(controller.lock()->interstitialAd()) << "the screen keeps it";
  controller.lock()->openAd();
  const auto button = controller.lock()->closeButton();
  button->tap();  // nobody but the screen holds it
  EXPECT_TRUE(controller.expired());
  EXPECT_EQ(destroyed(), std::pair(3ul, 3ul));
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
  for (const auto& broken : {status(200, "no picture"),
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
  ad->interstitialController()->closeAd();
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
