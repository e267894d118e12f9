#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Application.h"
#include "VorselKelp/ui/Button.h"
#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp {

class CoreContext;
class InterstitialAD;
class ITIView;
struct AdexObject;

/// The screen of an interstitial: the ad under a button that closes it. An application gets it from its
/// InterstitialAD and may present it itself; presented while no ad has come, it is empty but for the button.
/// Main thread.
///
/// The owner keeps its controller, which refers to the owner weakly; what the owner hands out holds both. So
/// both stay for as long as somebody holds or shows either, and go together.
class VORSELKELP_API InterstitialController final : public ui::ViewController,
                                                    public platform::LifeCycleObserver {
 public:
  using Callback = std::function<void(const std::shared_ptr<InterstitialAD>&)>;
  using FailureCallback =
      std::function<void(const std::shared_ptr<InterstitialAD>&, const std::optional<Error>&)>;

  /// For InterstitialAD: requests an ad for the placement at once and lays it out when it comes.
  static std::shared_ptr<InterstitialController> create(std::weak_ptr<InterstitialAD> owner,
                                                        const std::string& adId);
  /// One without an owner; it requests nothing, and each of the operations below stops the process.
  static std::shared_ptr<InterstitialController> create();
  ~InterstitialController() override;

  // What the user and the system do. Without an owner each stops the process.

  /// The close button: clears the image view, stops what plays in the ad, tells the owner, and dismisses the
  /// controller. Does nothing more until the controller is shown again.
  void closeAd();
  /// A tap on the ad: tells the owner and opens the demonstration page (Endpoints::demonstrationPage).
  void openAd();
  void willLeaveApplication();
  /// For an application that shows the ad's page in a browser of its own: that browser has been closed.
  void safariViewControllerDidFinish();

  void viewDidLoad() override;
  void viewWillAppear(bool animated) override;
  /// Like the close button; nothing without an owner.
  bool accessibilityPerformEscape() override;
  /// By the orientation of the device when the controller was made.
  [[nodiscard]] unsigned supportedInterfaceOrientations() override;
  [[nodiscard]] bool prefersStatusBarHidden() override { return statusBarHidden_; }

  void appBecameActive() override {}
  void appBecameInactive() override;
  void appBecameBackground() override {}
  void appWillTerminate() override {}

  // Set by the owner.
  Callback didReceiveInterstitialCLSR;
  FailureCallback interstitialFailedCLSR;
  Callback willPresentInterstitialCLSR;
  Callback willDismissInterstitialCLSR;
  Callback willLeaveApplicationInterstitialCLSR;
  Callback interstitialClosedCLSR;

  /// Whether InterstitialAD::showAd() presents. Nothing in this release sets it.
  bool isReady = false;

  [[nodiscard]] ui::DeviceOrientation orientation() const { return orientation_; }
  [[nodiscard]] const std::optional<std::string>& adId() const { return adId_; }
  [[nodiscard]] std::shared_ptr<InterstitialAD> interstitialAd() const { return interstitialAd_.lock(); }
  /// The main screen's size in points at the first call.
  double screenWidth();
  double screenHeight();
  const std::shared_ptr<ui::ImageView>& imageView();
  const std::shared_ptr<ui::Button>& closeButton();
  /// The ad: its picture and its text. Null until it has come.
  [[nodiscard]] std::shared_ptr<ui::View> iti() const;

 private:
  InterstitialController(std::weak_ptr<InterstitialAD> owner, std::optional<std::string> adId);
  std::shared_ptr<InterstitialController> self();
  std::shared_ptr<InterstitialAD> requiredOwner(const char* operation) const;
  /// What a tap runs: `operation` while the controller lives.
  std::function<void()> action(void (InterstitialController::*operation)());
  ui::Rect screenFrame();
  void requestAd();
  void layOut();
  void show(const AdexObject& ad);

  std::shared_ptr<CoreContext> context_;
  std::weak_ptr<InterstitialAD> interstitialAd_;
  std::optional<std::string> adId_;
  ui::DeviceOrientation orientation_;
  std::optional<double> screenWidth_;
  std::optional<double> screenHeight_;
  std::shared_ptr<ui::ImageView> imageView_;
  std::shared_ptr<ui::Button> closeButton_;
  std::shared_ptr<ITIView> iti_;
  bool statusBarHidden_ = true;
  bool closed_ = false;  ///< and not shown since
};

}  // namespace VorselKelp
