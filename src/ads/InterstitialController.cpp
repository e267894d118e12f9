#include "VorselKelp/InterstitialController.h"

#include <utility>

#include "VorselKelp/InterstitialAD.h"
#include "ads/AdFeed.h"
#include "ads/CloseButton.h"
#include "ads/ITIView.h"
#include "base/FatalError.h"
#include "core/CoreContext.h"
#include "gif/GifManager.h"

namespace VorselKelp {
namespace {

constexpr double buttonInset = 16;
constexpr double buttonCornerRadius = 5;

}  // namespace

InterstitialController::InterstitialController(std::weak_ptr<InterstitialAD> owner,
                                               std::optional<std::string> adId)
    : didReceiveInterstitialCLSR([](const auto&) {}),
      interstitialFailedCLSR([](const auto&, const auto&) {}),
      willPresentInterstitialCLSR([](const auto&) {}),
      willDismissInterstitialCLSR([](const auto&) {}),
      willLeaveApplicationInterstitialCLSR([](const auto&) {}),
      interstitialClosedCLSR([](const auto&) {}),
      context_(CoreContext::current("InterstitialController")),
      interstitialAd_(std::move(owner)),
      adId_(std::move(adId)),
      orientation_(context_->services->device->orientation()) {}

InterstitialController::~InterstitialController() {
  context_->print("InterstitialAD deinited");
}

std::shared_ptr<InterstitialController> InterstitialController::create(std::weak_ptr<InterstitialAD> owner,
                                                                       const std::string& adId) {
  std::shared_ptr<InterstitialController> controller(new InterstitialController(std::move(owner), adId));
  controller->modalPresentationCapturesStatusBarAppearance = true;
  controller->requestAd();
  controller->layOut();
  controller->context_->services->application->addObserver(
      std::weak_ptr<platform::LifeCycleObserver>(controller));
  return controller;
}

std::shared_ptr<InterstitialController> InterstitialController::create() {
  return std::shared_ptr<InterstitialController>(new InterstitialController({}, std::nullopt));
}

std::shared_ptr<InterstitialController> InterstitialController::self() {
  return std::static_pointer_cast<InterstitialController>(shared_from_this());
}

std::function<void()> InterstitialController::action(void (InterstitialController::*operation)()) {
  return [weak = std::weak_ptr(self()), operation] {
    if (const auto controller = weak.lock()) (*controller.*operation)();
  };
}

void InterstitialController::requestAd() {
  const auto feed = std::make_shared<AdFeed>(context_, std::make_shared<VorselRequest>(context_));
  const auto arrived = [feed, context = context_, weak = std::weak_ptr(self())](std::optional<AdexObject> ad,
                                                                                const std::optional<Error>&) {
    // Here, on the session's queue, the controller is looked for but never held: it must not end here.
    if (!ad || weak.expired()) return;
    feed->countImpression(*ad);
    context->services->mainQueue->async([weak, ad = *std::move(ad)] {
      if (const auto controller = weak.lock()) controller->show(ad);
    });
  };
  feed->request(static_cast<int>(screenWidth()), static_cast<int>(screenHeight()), adId_.value_or(""),
                arrived);
}

void InterstitialController::layOut() {
  const auto screen = view();
  const auto& picture = imageView();
  picture->frame = screenFrame();
  picture->addTapRecognizer(action(&InterstitialController::openAd));
  screen->addSubview(picture);
  const auto& button = closeButton();
  button->cornerRadius = buttonCornerRadius;
  button->translatesAutoresizingMaskIntoConstraints = false;
  screen->addSubview(button);
  screen->activate({ui::equal(button->top(), screen->top(), buttonInset),
                    ui::equal(button->leading(), screen->leading(), buttonInset)});
}

void InterstitialController::show(const AdexObject& ad) {
  iti_ = ITIView::create(context_, screenFrame(), orientation_, ad);
  if (closed_) iti_->stop();
  iti_->addTapRecognizer(action(&InterstitialController::openAd));
  view()->addSubview(iti_);
  view()->addSubview(closeButton());  // back on top of the ad
}

ui::Rect InterstitialController::screenFrame() {
  return {{0, 0}, {screenWidth(), screenHeight()}};
}

double InterstitialController::screenWidth() {
  if (!screenWidth_) screenWidth_ = context_->services->screen->width();
  return *screenWidth_;
}

double InterstitialController::screenHeight() {
  if (!screenHeight_) screenHeight_ = context_->services->screen->height();
  return *screenHeight_;
}

const std::shared_ptr<ui::ImageView>& InterstitialController::imageView() {
  if (!imageView_) imageView_ = std::make_shared<ui::ImageView>();
  return imageView_;
}

const std::shared_ptr<ui::Button>& InterstitialController::closeButton() {
  if (!closeButton_) closeButton_ = std::make_shared<CloseButton>();
  return closeButton_;
}

std::shared_ptr<ui::View> InterstitialController::iti() const {
  return iti_;
}

void InterstitialController::viewDidLoad() {
  closeButton()->onTouchUpInside(action(&InterstitialController::closeAd));
}

void InterstitialController::viewWillAppear(bool animated) {
  ViewController::viewWillAppear(animated);
  closed_ = false;
  if (iti_) iti_->resume();
  statusBarHidden_ = true;
  context_->services->viewPresenter->setNeedsStatusBarAppearanceUpdate(self());
}

unsigned InterstitialController::supportedInterfaceOrientations() {
  auto& screen = *context_->services->screen;
  switch (orientation_) {
    case ui::DeviceOrientation::portrait:
    case ui::DeviceOrientation::portraitUpsideDown:
      return ui::interfacePortrait;
    case ui::DeviceOrientation::faceUp:
    case ui::DeviceOrientation::faceDown:
      return screen.height() > screen.width() ? ui::interfacePortrait : ui::interfaceLandscape;
    default:
      return ui::interfaceLandscape;
  }
}

std::shared_ptr<InterstitialAD> InterstitialController::requiredOwner(const char* operation) const {
  auto owner = interstitialAd_.lock();
  if (!owner)
    fatalError(std::string("InterstitialController::") + operation + ": there is no InterstitialAD");
  return owner;
}

void InterstitialController::closeAd() {
  const auto owner = requiredOwner("closeAd");
  if (std::exchange(closed_, true)) return;
  const auto animations = gif::GifManager::of(*context_);
  imageView()->image = nullptr;
  animations->stop(*imageView());
  animations->remove(*imageView());
  if (iti_) iti_->stop();  // nothing plays behind a closed screen
  interstitialClosedCLSR(owner);
  context_->print("CLOSE INTERSTITIAL AD");
  context_->services->viewPresenter->dismiss(self(), true);
}

bool InterstitialController::accessibilityPerformEscape() {
  if (!interstitialAd()) return false;
  closeAd();
  return true;
}

void InterstitialController::openAd() {
  willPresentInterstitialCLSR(requiredOwner("openAd"));
  context_->services->application->openURL(context_->services->endpoints.demonstrationPage);
  context_->print("Open Ad");
}

void InterstitialController::willLeaveApplication() {
  willLeaveApplicationInterstitialCLSR(requiredOwner("willLeaveApplication"));
}

void InterstitialController::safariViewControllerDidFinish() {
  willDismissInterstitialCLSR(requiredOwner("safariViewControllerDidFinish"));
}

void InterstitialController::appBecameInactive() {
  willLeaveApplication();
}

}  // namespace VorselKelp
