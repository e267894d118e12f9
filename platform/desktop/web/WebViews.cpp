#include "VorselKelpDesktop/WebViews.h"

#include <utility>

#include "web/DesktopWebView.h"

namespace VorselKelp::desktop {
namespace {

class EngineViews final : public platform::WebViews {
 public:
  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = desktop::makeWebView(std::move(configuration));
    view->frame = frame;
    return view;
  }
};

}  // namespace

std::shared_ptr<WidgetWebView> makeWebView(ui::WebViewConfiguration configuration, PageEvents events) {
  return std::make_shared<DesktopWebView>(std::move(configuration), std::move(events));
}

std::shared_ptr<platform::WebViews> makeWebViews() {
  return std::make_shared<EngineViews>();
}

}  // namespace VorselKelp::desktop
