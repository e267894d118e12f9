#include "FrontPage.h"

#include "VorselKelp/InterstitialController.h"
#include "VorselKelp/ui/Label.h"

namespace news {

using namespace VorselKelp;

namespace {

struct Line {
  const char* text;
  ui::Font font;
  double gapAbove;
};

constexpr Line lines[]{
    {"The Daily Example", {28, true}, 48},
    {"Storm warning for the coast", {17, true}, 32},
    {"Ferries stay in port until tomorrow morning.", {13, false}, 4},
    {"Harbour museum opens its new wing", {17, true}, 24},
    {"Three floors of sails, knots and maps.", {13, false}, 4},
    {"Council votes on the tram extension", {17, true}, 24},
    {"Two stops more, and trees along the way.", {13, false}, 4},
};

using Call = simulator::OperationTable::Call;

FrontPage& pageOf(const Call& call) {
  return static_cast<FrontPage&>(*call.process.rootController());
}

JSONAny present(const Call& call) {
  pageOf(call).presentInterstitial(call.text(0), *call.process.presenter());
  return {};
}

JSONAny close(const Call& call) {
  pageOf(call).closeInterstitial();
  return {};
}

}  // namespace

void FrontPage::viewDidLoad() {
  constexpr double margin = 20;
  view()->backgroundColor = ui::Color{0.98, 0.96, 0.92, 1};
  auto above = view()->top();
  for (const auto& line : lines) {
    auto label = std::make_shared<ui::Label>();
    label->translatesAutoresizingMaskIntoConstraints = false;
    label->text = line.text;
    label->font = line.font;
    view()->addSubview(label);
    view()->activate({equal(label->top(), above, line.gapAbove),
                      equal(label->leading(), view()->leading(), margin),
                      equal(label->trailing(), view()->trailing(), -margin)});
    above = label->bottom();
  }
}

void FrontPage::presentInterstitial(const std::string& adId, platform::ViewPresenter& presenter) {
  closeInterstitial();
  ad_ = InterstitialAD::create(adId);
  const auto controller = ad_->interstitialController();
  controller->modalPresentationStyle = ui::PresentationStyle::overFullScreen;
  presenter.present(controller, shared_from_this(), true);
}

void FrontPage::closeInterstitial() {
  if (ad_) ad_->interstitialController()->closeAd();
  ad_ = nullptr;
}

simulator::OperationTable newsOperations() {
  auto operations = simulator::publicOperations();
  operations.add({{"presentInterstitial", "t", false, present}, {"closeInterstitial", "", false, close}});
  return operations;
}

}  // namespace news
