#include "BrellixPush/BrellixWebViewController.h"

#include <utility>

#include "base/FatalError.h"
#include "base/Url.h"
#include "core/CoreContext.h"

namespace BrellixPush {

using VorselKelp::CoreContext;
using VorselKelp::JSONAny;
using VorselKelp::Result;
namespace ui = VorselKelp::ui;

namespace {

constexpr double barHeight = 44;
constexpr double titleSize = 17;
constexpr double pageTimeout = 60;

}  // namespace

BrellixWebViewController::BrellixWebViewController(std::string url)
    : context_(CoreContext::current("BrellixWebViewController")), url_(std::move(url)) {}

BrellixWebViewController::BrellixWebViewController(const ui::Coder&) {
  VorselKelp::fatalError("init(coder:) has not been implemented");
}

void BrellixWebViewController::viewDidLoad() {
  webView_ = context_->services->webViews->makeWebView({}, {});
  webView_->setNavigationDelegate(std::static_pointer_cast<BrellixWebViewController>(shared_from_this()));
  fillBar();
  layOut();
  activityIndicator_->startAnimating();  // first, for a load that fails at once
  const auto page = VorselKelp::parseUrl(url_);
  webView_->load(page ? page->text : url_, pageTimeout);
}

void BrellixWebViewController::fillBar() {
  const ui::BarAppearance appearance{true, ui::Font{titleSize, false}};
  navigationBar_->standardAppearance = appearance;
  navigationBar_->compactAppearance = appearance;
  navigationBar_->scrollEdgeAppearance = appearance;
  const auto dismiss = [weak = weak_from_this()] {
    if (const auto self = weak.lock()) static_cast<BrellixWebViewController&>(*self).dismissWebView();
  };
  navigationBar_->setLeftButton({"Done", ui::BarButtonStyle::plain, ui::Color::pureBlue(), dismiss});
  navigationBar_->setRightView(activityIndicator_);
}

void BrellixWebViewController::layOut() {
  const auto screen = view();
  screen->backgroundColor = ui::Color::white();
  for (const std::shared_ptr<ui::View>& part :
       {std::shared_ptr<ui::View>(navigationBar_), std::shared_ptr<ui::View>(webView_)}) {
    part->translatesAutoresizingMaskIntoConstraints = false;
    screen->addSubview(part);
  }
  const auto safe = [&](ui::Attribute edge) { return screen->anchor(edge, ui::Edges::safeArea); };
  screen->activate({ui::equal(navigationBar_->top(), safe(ui::Attribute::top)),
                    ui::equal(navigationBar_->leading(), screen->leading()),
                    ui::equal(navigationBar_->trailing(), screen->trailing()),
                    ui::fixed(navigationBar_->height(), barHeight),
                    ui::equal(webView_->top(), navigationBar_->bottom()),
                    ui::equal(webView_->leading(), safe(ui::Attribute::leading)),
                    ui::equal(webView_->trailing(), safe(ui::Attribute::trailing)),
                    ui::equal(webView_->bottom(), safe(ui::Attribute::bottom))});
}

void BrellixWebViewController::dismissWebView() {
  context_->services->viewPresenter->dismiss(shared_from_this(), true);
}

void BrellixWebViewController::didFinishNavigation() {
  webView_->evaluateJavaScript("document.title",
                               [bar = std::weak_ptr(navigationBar_)](const Result<JSONAny>& answer) {
                                 const auto* title = answer ? answer->as<std::string>() : nullptr;
                                 const auto alive = bar.lock();
                                 if (alive && title && !title->empty()) alive->title = *title;
                               });
  activityIndicator_->stopAnimating();
}

void BrellixWebViewController::didFailNavigation(const VorselKelp::Error&) {
  activityIndicator_->stopAnimating();
  navigationBar_->title = "Error";
}

}  // namespace BrellixPush
