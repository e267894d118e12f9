#include "screen/PageSheet.h"

#include <utility>

#include "VorselKelp/ui/NavigationBar.h"
#include "web/DesktopWebView.h"

namespace VorselKelp::desktop {

/// A screen of the platform's own, made of the views that applications use.
class PageSheetBrowser::Sheet final : public ui::ViewController {
 public:
  using Leave = std::function<void(Sheet&)>;

  Sheet(std::string url, Leave leave, std::shared_ptr<DesktopWebView> page)
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
                          if (const auto self = weak.lock()) static_cast<Sheet&>(*self).close();
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
  const std::shared_ptr<DesktopWebView> page_;
};

PageSheetBrowser::PageSheetBrowser(std::weak_ptr<DesktopWindow> window,
                                   std::shared_ptr<platform::MainQueue> mainQueue,
                                   std::shared_ptr<Activity> activity,
                                   std::function<void(const std::string&)> picture,
                                   simulator::ScreenListener changed)
    : window_(std::move(window)),
      mainQueue_(std::move(mainQueue)),
      activity_(std::move(activity)),
      picture_(std::move(picture)),
      changed_(std::move(changed)) {}

PageSheetBrowser::~PageSheetBrowser() = default;

void PageSheetBrowser::present(const std::string& url) {
  const auto window = window_.lock();
  if (!window) return;
  if (sheet_) sheet_->close();
  auto page = std::make_shared<DesktopWebView>(
      ui::WebViewConfiguration{}, activity_,
      [picture = picture_, queue = mainQueue_](DesktopWebView&, const std::shared_ptr<void>& busy) {
        if (picture) queue->asyncAfter(paintingSeconds, [picture, busy] { picture("browser"); });
      });
  const auto leave = [weak = window_, changed = changed_](Sheet& sheet) {
    if (const auto open = weak.lock()) open->remove(sheet);
    changed(false);
  };
  sheet_ = std::make_shared<Sheet>(url, leave, std::move(page));
  (void)sheet_->view();
  window->push(sheet_);
  sheet_->viewDidAppear(true);
  changed_(true);
}

}  // namespace VorselKelp::desktop
