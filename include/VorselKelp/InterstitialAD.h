#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/InterstitialController.h"
#include "VorselKelp/Result.h"

namespace VorselKelp {

class InterstitialAD;

/// Hears what happens to an interstitial. Main thread.
///
/// This release never calls interstitialDidReceiveAd and interstitialViewDidFailToReceiveAdWithError: an
/// answer of the feed that carries no ad, or none at all, calls nothing.
class InterstitialDelegate {
 public:
  using Ad = std::shared_ptr<InterstitialAD>;

  virtual ~InterstitialDelegate() = default;
  virtual void interstitialDidReceiveAd(const Ad& ad) = 0;
  virtual void interstitialViewDidFailToReceiveAdWithError(const Ad& ad,
                                                           const std::optional<Error>& error) = 0;
  /// The ad was tapped and its page is about to be opened.
  virtual void interstitialWillPresentScreen(const Ad& ad) = 0;
  /// Only when the application reports, by InterstitialController::safariViewControllerDidFinish(), that the
  /// browser it showed the page in has been closed.
  virtual void interstitialWillDismissScreen(const Ad& ad) = 0;
  virtual void interstitialWillLeaveApplication(const Ad& ad) = 0;
  virtual void interstitialClosed(const Ad& ad) = 0;
};

/// A full-screen ad. The application keeps it; it keeps the controller that shows the ad. Main thread.
class VORSELKELP_API InterstitialAD : public std::enable_shared_from_this<InterstitialAD> {
 public:
  /// Requests an ad for the placement `adId` at once. Without a platform installed the process stops.
  static std::shared_ptr<InterstitialAD> create(const std::string& adId);
  InterstitialAD(const InterstitialAD&) = delete;
  InterstitialAD& operator=(const InterstitialAD&) = delete;
  ~InterstitialAD();

  /// Presents the ad on the key window's root controller when the controller is ready, which no controller is
  /// in this release: nothing is presented. An application shows the controller itself. When it is ready and
  /// there is no root controller, the process stops.
  void showAd();

  /// Whoever holds or presents it holds this ad with it.
  [[nodiscard]] std::shared_ptr<InterstitialController> interstitialController() const {
    return {shared_from_this(), interstitialController_.get()};
  }
  [[nodiscard]] std::shared_ptr<InterstitialDelegate> interstitialDelegate() const {
    return interstitialDelegate_.lock();
  }
  /// Held weakly.
  void setInterstitialDelegate(std::weak_ptr<InterstitialDelegate> delegate) {
    interstitialDelegate_ = std::move(delegate);
  }
  [[nodiscard]] const std::string& adId() const { return adId_; }

 private:
  using Event = void (InterstitialDelegate::*)(const std::shared_ptr<InterstitialAD>&);

  explicit InterstitialAD(std::string adId);
  /// A callback of the controller's that calls this operation of the delegate, if there is one then.
  std::function<void(const std::shared_ptr<InterstitialAD>&)> forwarding(Event event);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<InterstitialController> interstitialController_;
  std::weak_ptr<InterstitialDelegate> interstitialDelegate_;
  std::string adId_;
};

}  // namespace VorselKelp
