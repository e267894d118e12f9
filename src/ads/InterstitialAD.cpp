#include "VorselKelp/InterstitialAD.h"

#include <utility>

#include "base/FatalError.h"
#include "core/CoreContext.h"

namespace VorselKelp {

InterstitialAD::InterstitialAD(std::string adId)
    : context_(CoreContext::current("InterstitialAD")), adId_(std::move(adId)) {}

InterstitialAD::~InterstitialAD() {
  context_->print("DEINITED VorselKelp.InterstitialAD");
}

std::shared_ptr<InterstitialAD> InterstitialAD::create(const std::string& adId) {
  std::shared_ptr<InterstitialAD> ad(new InterstitialAD(adId));
  auto& controller = ad->interstitialController_;
  controller = InterstitialController::create(ad, adId);
  using Delegate = InterstitialDelegate;
  controller->didReceiveInterstitialCLSR = ad->forwarding(&Delegate::interstitialDidReceiveAd);
  controller->interstitialFailedCLSR = [weak = std::weak_ptr(ad)](const Delegate::Ad& failed,
                                                                  const std::optional<Error>& error) {
    const auto self = weak.lock();
    const auto delegate = self ? self->interstitialDelegate() : nullptr;
    if (!delegate) return;
    if (!failed) fatalError("InterstitialAD: an ad failed and no InterstitialAD was named");
    delegate->interstitialViewDidFailToReceiveAdWithError(failed, error);
  };
  controller->willPresentInterstitialCLSR = ad->forwarding(&Delegate::interstitialWillPresentScreen);
  controller->willDismissInterstitialCLSR = ad->forwarding(&Delegate::interstitialWillDismissScreen);
  controller->willLeaveApplicationInterstitialCLSR =
      ad->forwarding(&Delegate::interstitialWillLeaveApplication);
  controller->interstitialClosedCLSR = ad->forwarding(&Delegate::interstitialClosed);
  return ad;
}

std::function<void(const std::shared_ptr<InterstitialAD>&)> InterstitialAD::forwarding(Event event) {
  return [weak = weak_from_this(), event](const std::shared_ptr<InterstitialAD>& ad) {
    const auto self = weak.lock();
    const auto delegate = self ? self->interstitialDelegate() : nullptr;
    if (delegate) (*delegate.*event)(ad);
  };
}

void InterstitialAD::showAd() {
  if (!interstitialController_ || !interstitialController_->isReady) return;
  auto& presenter = *context_->services->viewPresenter;
  const auto root = presenter.rootViewController();
  if (!root) fatalError("InterstitialAD::showAd: there is no key window with a root view controller");
  interstitialController_->modalPresentationStyle = ui::PresentationStyle::overFullScreen;
  presenter.present(interstitialController(), root, true);
}

}  // namespace VorselKelp
