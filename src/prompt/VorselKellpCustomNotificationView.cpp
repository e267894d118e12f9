#include "prompt/VorselKellpCustomNotificationView.h"

#include <utility>

#include "base/Text.h"
#include "prompt/CustomPromtEvent.h"
#include "prompt/MessageText.h"
#include "prompt/PromptPage.h"

namespace VorselKelp {
namespace {

/// Next to nothing: the view grows with the controller's.
constexpr ui::Rect initialFrame{{0, 0}, {0.1, 0.1}};

}  // namespace

VorselKellpCustomNotificationView::VorselKellpCustomNotificationView(std::shared_ptr<CoreContext> context,
                                                                     std::function<void()> agreed)
    : context_(std::move(context)),
      agreed_(std::move(agreed)),
      promtHelper_(std::shared_ptr<StorageManager>(context_, &context_->storage)) {}

void VorselKellpCustomNotificationView::loadView() {
  const auto self = std::static_pointer_cast<VorselKellpCustomNotificationView>(shared_from_this());
  ui::WebViewConfiguration configuration;
  configuration.javaScriptEnabled = true;
  configuration.javaScriptCanOpenWindowsAutomatically = true;
  configuration.messageHandlers.push_back({consoleBridge, console_});
  configuration.userScripts.push_back({std::string(consoleForwardingScript()), true});
  webView_ = context_->services->webViews->makeWebView(std::move(configuration), initialFrame);
  webView_->addMessageHandler(answerBridge, self);
  webView_->setNavigationDelegate(self);
  webView_->opaque = false;
  webView_->backgroundColor = ui::Color::clear();
  webView_->scrollBackgroundColor = ui::Color::clear();
  setView(webView_);
}

void VorselKellpCustomNotificationView::viewDidAppear(bool animated) {
  ViewController::viewDidAppear(animated);
  if (!webView_) return;
  answered_ = false;
  webView_->loadHTMLString(
      promptPage(context_->services->endpoints.script, promtHelper_.configurationScript()), std::nullopt);
}

void VorselKellpCustomNotificationView::didReceive(const std::string& name, const JSONAny& body) {
  if (name != answerBridge || std::exchange(answered_, true)) return;
  const auto self = shared_from_this();  // dismissing may let go of the last one who keeps this
  const std::string text = messageText(body, CustomPromtEvent::textLimit);
  context_->services->viewPresenter->dismiss(self, false);
  if (isValidUtf8(text)) answer(text);
}

bool VorselKellpCustomNotificationView::accessibilityPerformEscape() {
  didReceive(answerBridge, R"({"event":"pns.cancel"})");
  return true;
}

void VorselKellpCustomNotificationView::answer(const std::string& text) {
  const auto event = CustomPromtEvent::decode(text);
  if (event && event->agrees() && agreed_) agreed_();
  context_->print(event ? event->description() : "nil");
}

}  // namespace VorselKelp
