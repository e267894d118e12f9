#include "screen/PageSheet.h"

#include <utility>

#include "VorselKelp/ui/NavigationBar.h"
#include "web/DesktopWebView.h"

namespace VorselKelp::desktop {

/// A screen of the platform's own, made of the views that applications use.
class PageSheetBrowser::Sheet final : public ui::ViewController {
 public:
  Sheet(std::string url, std::function<void()> close, std::shared_ptr<DesktopWebView> page)
      : url_(std::move(url)), close_(std::move(close)), page_(std::move(page)) {}

  void viewDidLoad() override {
    constexpr double barHeight = 44;
    view()->backgroundColor = ui::Color::white();
    auto bar = std::make_shared<ui::NavigationBar>();
    bar->title = url_;
    bar->standardAppearance = ui::BarAppearance{true, {13, false}};
    bar->setLeftButton({"Done", ui::BarButtonStyle::done, ui::Color::pureBlue(), close_});
    for (const auto& each : {std::shared_ptr<ui::View>(bar), std::shared_ptr<ui::View>(page_)}) {
      each->translatesAutoresizingMaskIntoConstraints = false;
      view()->addSubview(each);
      view()->activate(
          {equal(each->leading(), view()->leading()), equal(each->trailing(), view()->trailing())});
    }
    view()->activate({equal(bar->top(), view()->top()), fixed(bar->height(), barHeight),
                      equal(page_->top(), bar->bottom()), equal(page_->bottom(), view()->bottom())});
  }

  void viewDidAppear(bool) override { page_->load(url_, timeoutSeconds); }

 private:
  static constexpr double timeoutSeconds = 60;

  const std::string url_;
  const std::function<void()> close_;
  const std::shared_ptr<DesktopWebView> page_;
};

PageSheetBrowser::PageSheetBrowser(std::weak_ptr<DesktopWindow> window,
                                   std::shared_ptr<platform::MainQueue> mainQueue,
                                   std::shared_ptr<Activity> activity,
                                   std::function<void(const std::string&)> picture)
    : window_(std::move(window)),
      mainQueue_(std::move(mainQueue)),
      activity_(std::move(activity)),
      picture_(std::move(picture)) {}

PageSheetBrowser::~PageSheetBrowser() = default;

void PageSheetBrowser::present(const std::string& url) {
  const auto window = window_.lock();
  if (!window) return;
  if (sheet_) window->remove(*sheet_);
  auto page = std::make_shared<DesktopWebView>(
      ui::WebViewConfiguration{}, activity_,
      [picture = picture_, queue = mainQueue_](DesktopWebView&, const std::shared_ptr<void>& busy) {
        if (picture) queue->asyncAfter(paintingSeconds, [picture, busy] { picture("browser"); });
      });
  const auto shown = std::make_shared<std::weak_ptr<Sheet>>();
  const auto close = [weak = window_, shown] {
    const auto closed = shown->lock();
    if (const auto open = weak.lock(); open && closed) open->remove(*closed);
  };
  sheet_ = std::make_shared<Sheet>(url, close, std::move(page));
  *shown = sheet_;
  (void)sheet_->view();
  window->push(sheet_);
  sheet_->viewDidAppear(true);
}

}  // namespace VorselKelp::desktop
