#pragma once

#include <memory>
#include <string>

#include "VorselKelp/InterstitialAD.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/ui/ViewController.h"
#include "VorselKelpSimulator/OperationTable.h"

namespace news {

/// The screen that the application starts with: today's headlines.
class FrontPage final : public VorselKelp::ui::ViewController {
 public:
  void viewDidLoad() override;

  /// Shows an ad of this placement over the page as soon as it is asked for; its picture comes later.
  void presentInterstitial(const std::string& adId, VorselKelp::platform::ViewPresenter& presenter);
  /// The user closes it.
  void closeInterstitial();

 private:
  std::shared_ptr<VorselKelp::InterstitialAD> ad_;
};

/// What the application can be asked to do from outside, beside the library's own operations.
VorselKelp::simulator::OperationTable newsOperations();

}  // namespace news
