#pragma once

#include <memory>
#include <string>
#include <utility>

#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/WebViews.h"
#include "stage/OverlayStage.h"

namespace VorselKelp::gtk {

class BrowserSheet;

/// The in-app browser, as sheets on the stage.
class SheetBrowser final : public platform::InAppBrowser {
 public:
  SheetBrowser(std::weak_ptr<OverlayStage> stage, std::shared_ptr<platform::WebViews> webViews)
      : stage_(std::move(stage)), webViews_(std::move(webViews)) {}
  void present(const std::string& url) override;

 private:
  const std::weak_ptr<OverlayStage> stage_;
  const std::shared_ptr<platform::WebViews> webViews_;
  std::shared_ptr<BrowserSheet> sheet_;
};

}  // namespace VorselKelp::gtk
