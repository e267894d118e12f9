#include "stage/BrowserSheet.h"

#include <utility>

#include "VorselKelp/ui/NavigationBar.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::gtk {

/// A screen of the platform's own, made of the views that applications use.
class BrowserSheet final : public ui::ViewController {
 public:
  using Leave = std::function<void(BrowserSheet&)>;

  BrowserSheet(std::string url, Leave leave, std::shared_ptr<ui::WebView> page)
      : url_(std::move(url)), leave_(std::move(leave)), page_(std::move(page)) {}

  void close() {
    if (const auto leave = std::exchange(leave_, nullptr)) leave(*this);
  }

  void viewDidLoad() override {
    constexpr double barHeight = 44;
    view()->backgroundColor = ui::Color::white();
    auto bar = std::make_shared<ui::NavigationBar>();
    bar->title = url_;
    bar->standardAppearance = ui::BarAppearance{true, {13, false}};
    bar->setLeftButton({"Done", ui::BarButtonStyle::done, ui::Color::pureBlue(), [weak = weak_from_this()] {
                          if (const auto self = weak.lock()) static_cast<BrowserSheet&>(*self).close();
                        }});
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
  Leave leave_;  ///< null once it was left
  const std::shared_ptr<ui::WebView> page_;
};

void SheetBrowser::present(const std::string& url) {
  const auto stage = stage_.lock();
  if (!stage) return;
  if (sheet_) sheet_->close();
  auto* overlay = stage->topOverlay();
  if (overlay == nullptr) {
    posix::standardErrorLines()("A page can't be shown there");
    return;
  }
  const auto leave = [weak = stage_](BrowserSheet& sheet) {
    const auto open = weak.lock();
    if (!open) return;
    open->remove(sheet);
    open->options().screenChanged(false);
  };
  sheet_ = std::make_shared<BrowserSheet>(url, leave, webViews_->makeWebView({}, {}));
  (void)sheet_->view();
  const auto close = [shown = std::weak_ptr(sheet_)] {
    if (const auto sheet = shown.lock()) sheet->close();
    return true;
  };
  stage->push(overlay, sheet_, {close, close});
  sheet_->viewDidAppear(true);
  stage->options().screenChanged(true);
}

}  // namespace VorselKelp::gtk
