#include <string_view>
#include <utility>

#include "VorselKelpSimulator/HeadlessScreen.h"

namespace VorselKelp::simulator {
namespace {

const Error noEngine{"There is no web engine here"};

/// What the prompt's script would post.
const char* messageOf(PromptAnswer answer) {
  return answer == PromptAnswer::ok ? R"({"event":"pns.ok","data":{}})" : R"({"event":"pns.cancel"})";
}

/// What stands between two texts of the page; empty where either is missing.
std::string between(const std::string& page, std::string_view before, std::string_view behind) {
  auto begin = page.find(before);
  if (begin == std::string::npos) return {};
  begin += before.size();
  const auto end = page.find(behind, begin);
  return end == std::string::npos ? std::string() : page.substr(begin, end - begin);
}

class HeadlessWebView final : public ui::WebView {
 public:
  /// Without a session there is no engine at all.
  HeadlessWebView(std::shared_ptr<platform::MainQueue> mainQueue,
                  std::shared_ptr<platform::URLSession> session, PromptAnswer answer,
                  ui::WebViewConfiguration configuration)
      : mainQueue_(std::move(mainQueue)),
        session_(std::move(session)),
        answer_(answer),
        configuration_(std::move(configuration)) {}

  void addMessageHandler(const std::string& name, std::weak_ptr<ui::ScriptMessageHandler> handler) override {
    configuration_.messageHandlers.push_back({name, std::move(handler)});
  }

  void loadHTMLString(const std::string& html, const std::optional<std::string>&) override {
    if (!session_) return fail();
    const bool alive = JSONAny::decode(between(html, "var _VSPC = ", ";\n}\n</script>")).ok();
    platform::URLRequest script;
    script.url = between(html, "<script async src=\"", "\"");
    script.discardBody = true;
    // Its listeners are the page's own: the script may come or not.
    session_->send(std::move(script),
                   [queue = mainQueue_, weak = weak_from_this(), alive](const platform::URLResult&) {
                     queue->async([weak, alive] {
                       if (const auto self = weak.lock()) static_cast<HeadlessWebView&>(*self).loaded(alive);
                     });
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

  void loaded(bool alive) {
    if (const auto delegate = navigationDelegate()) delegate->didFinishNavigation();
    if (alive && answer_ != PromptAnswer::none) post(platform::answerBridge, messageOf(answer_));
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
  const std::shared_ptr<platform::URLSession> session_;
  const PromptAnswer answer_;
  ui::WebViewConfiguration configuration_;
};

class HeadlessWebViews final : public platform::WebViews {
 public:
  HeadlessWebViews(std::shared_ptr<platform::MainQueue> mainQueue,
                   std::shared_ptr<platform::URLSession> session, PromptAnswer answer)
      : mainQueue_(std::move(mainQueue)), session_(std::move(session)), answer_(answer) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = std::make_shared<HeadlessWebView>(mainQueue_, session_, answer_, std::move(configuration));
    view->frame = frame;
    return view;
  }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<platform::URLSession> session_;
  const PromptAnswer answer_;
};

}  // namespace

std::shared_ptr<platform::WebViews> makeHeadlessWebViews(std::shared_ptr<platform::MainQueue> mainQueue,
                                                         std::shared_ptr<platform::URLSession> session,
                                                         PromptAnswer answer) {
  return std::make_shared<HeadlessWebViews>(std::move(mainQueue), std::move(session), answer);
}

std::shared_ptr<platform::WebViews> makeUnavailableWebViews(std::shared_ptr<platform::MainQueue> mainQueue) {
  return std::make_shared<HeadlessWebViews>(std::move(mainQueue), nullptr, PromptAnswer::none);
}

}  // namespace VorselKelp::simulator
