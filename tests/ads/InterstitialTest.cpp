#include "ads/InterstitialTest.h"

#include <string>
#include <utility>

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::ServerAnswer;
using ui::Attribute;
using ui::DeviceOrientation;

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
  struct Watch final : platform::ScreenObserver {
    explicit Watch(testing_platform::RecordingConsole& console) : console_(console) {}
    void screenDidAppear() override {}
    void screenDidDisappear() override { linesBefore = console_.texts().size(); }
    std::size_t linesBefore = 0;
    testing_platform::RecordingConsole& console_;
  };
  const auto watch = std::make_shared<Watch>(*app_.console);
  app_.application->addObserver(std::weak_ptr<platform::ScreenObserver>(watch));
  controller.closeButton()->tap();
  EXPECT_EQ(watch->linesBefore, 1u) << "the line comes before the screen goes";
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

TEST_F(InterstitialTest, TheDelegateHearsBeforeThePageOpensAndBeforeTheScreenGoes) {
  const auto ad = make();
  present(ad);
  std::size_t opened = 0;
  listener_->look = [&] {
    EXPECT_EQ(app_.application->openedURLs().size(), opened);
    EXPECT_TRUE(root_->presentedViewController());
    EXPECT_THAT(app_.console->texts(), IsEmpty());
  };
  ad->interstitialController()->openAd();
  opened = 1;
  app_.console->clear();
  ad->interstitialController()->closeAd();
  EXPECT_EQ(heard().size(), 2u);
}

TEST_F(InterstitialTest, WithoutAnOwnerEveryOperationStopsTheProcess) {
  const auto controller = InterstitialController::create();
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

}  // namespace
}  // namespace VorselKelp
