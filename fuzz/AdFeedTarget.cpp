// The ad feed's answer in an interstitial: from the request to the screen that is shown, tapped and closed.

#include <algorithm>

#include "VorselKelp/InterstitialAD.h"
#include "ads/AdRecords.h"
#include "ads/ITIView.h"
#include "base/Url.h"
#include "json/Decoder.h"
#include "json/Encoder.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

struct Listener final : InterstitialDelegate {
  void interstitialDidReceiveAd(const Ad&) override { ++never; }
  void interstitialViewDidFailToReceiveAdWithError(const Ad&, const std::optional<Error>&) override {
    ++never;
  }
  void interstitialWillPresentScreen(const Ad& ad) override { count(ad, presented); }
  void interstitialWillDismissScreen(const Ad& ad) override { count(ad, never); }
  void interstitialWillLeaveApplication(const Ad& ad) override { count(ad, left); }
  void interstitialClosed(const Ad& ad) override { count(ad, closed); }

  static void count(const Ad& ad, int& what) {
    FUZZ_EXPECT(ad);
    ++what;
  }
  int never = 0, presented = 0, left = 0, closed = 0;
};

/// The record, unless the answer holds none; it reads back as it was written.
std::optional<AdexObject> recordOf(const fuzz::memory::ServerAnswer& answer) {
  if (answer.status != 200) return std::nullopt;
  const auto ad = json::decode<AdexObject>(std::string_view(answer.body));
  if (!ad) return std::nullopt;
  const auto text = json::encode(*ad);
  FUZZ_EXPECT(text);
  const auto again = json::decode<AdexObject>(std::string_view(*text));
  FUZZ_EXPECT(again && *json::encode(*again) == *text);
  return *ad;
}

void checkShown(InterstitialController& controller, const std::optional<AdexObject>& record) {
  const auto shown = std::static_pointer_cast<ITIView>(controller.iti());
  FUZZ_EXPECT((shown != nullptr) == record.has_value());
  if (!shown) return;
  const Md* creative = record->creative();
  FUZZ_EXPECT(shown->textView()->text.get() == (creative ? creative->title.value_or("") : ""));
  FUZZ_EXPECT(controller.view()->subviews().back() == controller.closeButton());
}

/// The request for the ad, at most one impression, and the picture.
void checkRequests(const fuzz::Process& application, const std::optional<AdexObject>& record) {
  const auto urls = application.platform.urlSession->urls();
  FUZZ_EXPECT(!urls.empty() && urls.size() <= 3);
  const Md* creative = record ? record->creative() : nullptr;
  const bool counted = creative && creative->l2 && creative->cpmT && !creative->cpmT->empty();
  const bool pictured = creative && creative->img;
  FUZZ_EXPECT(urls.size() <= 1U + counted + pictured);
  for (const auto& url : urls) FUZZ_EXPECT(url.find("${l2}") == std::string::npos || !counted);
}

void useScreen(fuzz::Process& application, const std::shared_ptr<InterstitialAD>& ad,
               const std::shared_ptr<ui::ViewController>& root, const Listener& listener) {
  auto& controller = *ad->interstitialController();
  application.platform.presenter->present(ad->interstitialController(), root, true);
  application.platform.device->screen->refresh(1);
  controller.openAd();
  application.platform.application->resignActive();
  controller.closeAd();
  controller.closeAd();
  application.platform.settle();
  application.platform.device->screen->refresh(2);
  FUZZ_EXPECT(application.platform.device->screen->runningLinks() == 0);
  FUZZ_EXPECT(listener.never == 0 && listener.presented == 1 && listener.left == 1 && listener.closed == 1);
  FUZZ_EXPECT(application.platform.presenter->dismissals().size() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.choice();
  fuzz::memory::ServerAnswer answer;
  answer.status = (choice & 8U) != 0 ? 404 : 200;
  answer.body = input.all();

  const auto device = fuzz::makeDevice();
  fuzz::Process application(device);
  application.platform.bundle->setMain("VorselKellpTrackID", "feed-7");
  application.platform.urlSession->setRule("/v1/display/feed-7", answer);
  application.platform.urlSession->setRule("*", fuzz::pictureAnswer(choice));
  const auto root = std::make_shared<ui::ViewController>();
  application.platform.presenter->setRootViewController(root);
  const auto listener = std::make_shared<Listener>();
  const auto ad = InterstitialAD::create("slot");
  ad->setInterstitialDelegate(listener);
  application.platform.settle();

  const auto record = recordOf(answer);
  checkShown(*ad->interstitialController(), record);
  checkRequests(application, record);
  useScreen(application, ad, root, *listener);
  return 0;
}
