#include <utility>

#include "VorselKelpLinux/HeadlessScreen.h"

namespace VorselKelp::linux_platform {
namespace {

const Error noEngine{"There is no web engine here"};

/// What the prompt's script would post.
const char* messageOf(PromptAnswer answer) {
  return answer == PromptAnswer::ok ? R"({"event":"pns.ok","data":{}})" : R"({"event":"pns.cancel"})";
}

class HeadlessWebView final : public ui::WebView {
 public:
  HeadlessWebView(std::shared_ptr<platform::MainQueue> mainQueue, PromptAnswer answer,
                  std::function<void(const std::string&)> shown, ui::WebViewConfiguration configuration)
      : mainQueue_(std::move(mainQueue)),
        answer_(answer),
        shown_(std::move(shown)),
        configuration_(std::move(configuration)) {}

  void addMessageHandler(const std::string& name, std::weak_ptr<ui::ScriptMessageHandler> handler) override {
    configuration_.messageHandlers.push_back({name, std::move(handler)});
  }

  void loadHTMLString(const std::string& html, const std::optional<std::string>&) override {
    if (!shown_) return fail();
    shown_(html);
    later([](HeadlessWebView& self) {
      if (const auto delegate = self.navigationDelegate()) delegate->didFinishNavigation();
      if (self.answer_ != PromptAnswer::none) self.post("JSBridge", messageOf(self.answer_));
    });
  }

  void load(const std::string&, double) override { fail(); }

  void evaluateJavaScript(const std::string&, std::function<void(Result<JSONAny>)> answer) override {
    mainQueue_->async([answer = std::move(answer)] { answer(noEngine); });
  }

 private:
  template <class Work>
  void later(Work work) {
    mainQueue_->async([weak = weak_from_this(), work] {
      if (const auto self = weak.lock()) work(static_cast<HeadlessWebView&>(*self));
    });
  }

  void fail() {
    later([](HeadlessWebView& self) {
      if (const auto delegate = self.navigationDelegate()) delegate->didFailNavigation(noEngine);
    });
  }

  void post(const std::string& name, const std::string& body) {
    for (const auto& entry : configuration_.messageHandlers) {
      if (entry.name != name) continue;
      if (const auto handler = entry.handler.lock()) return handler->didReceive(name, body);
    }
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const PromptAnswer answer_;
  const std::function<void(const std::string&)> shown_;
  ui::WebViewConfiguration configuration_;
};

class HeadlessWebViews final : public platform::WebViews {
 public:
  HeadlessWebViews(std::shared_ptr<platform::MainQueue> mainQueue, PromptAnswer answer,
                   std::function<void(const std::string&)> shown)
      : mainQueue_(std::move(mainQueue)), answer_(answer), shown_(std::move(shown)) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = std::make_shared<HeadlessWebView>(mainQueue_, answer_, shown_, std::move(configuration));
    view->frame = frame;
    return view;
  }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const PromptAnswer answer_;
  const std::function<void(const std::string&)> shown_;
};

}  // namespace

std::shared_ptr<platform::WebViews> makeHeadlessWebViews(std::shared_ptr<platform::MainQueue> mainQueue,
                                                         PromptAnswer answer,
                                                         std::function<void(const std::string& html)> shown) {
  return std::make_shared<HeadlessWebViews>(std::move(mainQueue), answer, std::move(shown));
}

std::shared_ptr<platform::WebViews> makeUnavailableWebViews(std::shared_ptr<platform::MainQueue> mainQueue) {
  return std::make_shared<HeadlessWebViews>(std::move(mainQueue), PromptAnswer::none, nullptr);
}

}  // namespace VorselKelp::linux_platform
