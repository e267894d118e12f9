#include "VorselKelpWebKit/WebViews.h"

#include <utility>

#include "pages/EngineWebView.h"

namespace VorselKelp::webkit {
namespace {

class EngineViews final : public platform::WebViews {
 public:
  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = webkit::makeWebView(std::move(configuration));
    view->frame = frame;
    return view;
  }
};

}  // namespace

std::shared_ptr<gtk::WidgetWebView> makeWebView(ui::WebViewConfiguration configuration, PageEvents events) {
  return std::make_shared<EngineWebView>(std::move(configuration), std::move(events));
}

std::shared_ptr<platform::WebViews> makeWebViews() {
  return std::make_shared<EngineViews>();
}

}  // namespace VorselKelp::webkit
