#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/InterstitialAD.h"
#include "ads/ITIView.h"
#include "core/TestCore.h"
#include "net/ServerAnswers.h"

namespace VorselKelp {

/// Writes down what an ad tells its delegate.
class AdListener final : public InterstitialDelegate {
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
  std::function<void()> look;  ///< runs whenever something is told

 private:
  void hear(const std::string& what, const Ad& ad) {
    if (look) look();
    heard.push_back(what + " " + (ad ? ad->adId() : std::string("nobody")));
  }
};

/// An ad in the making, on a device in memory whose feed the test plays.
class InterstitialTest : public testing::Test {
 protected:
  InterstitialTest() {
    app_.bundle->setMain("VorselKellpTrackID", "feed-7");
    app_.presenter->setRootViewController(root_);
  }

  std::shared_ptr<InterstitialAD> make(ui::DeviceOrientation orientation = ui::DeviceOrientation::portrait) {
    auto values = app_.device->hardware->values();
    values.orientation = orientation;
    app_.device->hardware->set(values);
    auto ad = InterstitialAD::create("slot");
    ad->setInterstitialDelegate(listener_);
    return ad;
  }
  /// The feed answers the oldest request with an ad whose creative has these members.
  void adArrives(const std::string& creative) {
    answer(status(200, R"({"items":[{"md":{)" + creative + "}}]}"));
    app_.mainQueue->runUntilIdle();
  }
  void answer(const testing_platform::ServerAnswer& with) {
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
  std::shared_ptr<AdListener> listener_ = std::make_shared<AdListener>();
};

}  // namespace VorselKelp
