#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::system {
namespace {

class UnavailablePresenter final : public platform::ViewPresenter {
 public:
  std::shared_ptr<ui::ViewController> rootViewController() override { return nullptr; }
  void present(const std::shared_ptr<ui::ViewController>&, const std::shared_ptr<ui::ViewController>&,
               bool) override {
    posix::standardErrorLines()("A screen is not available in an extension");
  }
  void dismiss(const std::shared_ptr<ui::ViewController>&, bool) override {}
  void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>&) override {}
};

const Error noEngine{"There is no web engine in an extension"};

class UnavailableWebView final : public ui::WebView {
 public:
  explicit UnavailableWebView(std::shared_ptr<platform::MainQueue> mainQueue)
      : mainQueue_(std::move(mainQueue)) {}

  void addMessageHandler(const std::string&, std::weak_ptr<ui::ScriptMessageHandler>) override {}
  void loadHTMLString(const std::string&, const std::optional<std::string>&) override { fail(); }
  void load(const std::string&, double) override { fail(); }
  void evaluateJavaScript(const std::string&, std::function<void(Result<JSONAny>)> answer) override {
    mainQueue_->async([answer = std::move(answer)] { answer(noEngine); });
  }

 private:
  void fail() {
    mainQueue_->async([weak = weak_from_this()] {
      const auto self = weak.lock();
      if (!self) return;
      const auto delegate = static_cast<UnavailableWebView&>(*self).navigationDelegate();
      if (delegate) delegate->didFailNavigation(noEngine);
    });
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
};

class UnavailableWebViews final : public platform::WebViews {
 public:
  explicit UnavailableWebViews(std::shared_ptr<platform::MainQueue> mainQueue)
      : mainQueue_(std::move(mainQueue)) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration, ui::Rect frame) override {
    auto view = std::make_shared<UnavailableWebView>(mainQueue_);
    view->frame = frame;
    return view;
  }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
};

}  // namespace

std::shared_ptr<platform::ViewPresenter> makeUnavailablePresenter() {
  return std::make_shared<UnavailablePresenter>();
}

std::shared_ptr<platform::WebViews> makeUnavailableWebViews(std::shared_ptr<platform::MainQueue> mainQueue) {
  return std::make_shared<UnavailableWebViews>(std::move(mainQueue));
}

}  // namespace VorselKelp::system
