#include "VorselKelpTesting/MemoryScreen.h"

#include <cstdio>

namespace VorselKelp::testing_platform {

void RecordingPresenter::present(const std::shared_ptr<ui::ViewController>& controller,
                                 const std::shared_ptr<ui::ViewController>& from, bool animated) {
  if (!from || !from->link(controller)) {
    std::fputs("A screen can't be presented there\n", stderr);
    return;
  }
  presentations_.push_back({controller, animated});
  const auto view = controller->view();
  controller->viewWillAppear(animated);
  if (view) view->performLayout();
  controller->viewDidAppear(animated);
  if (application_) application_->screenAppears();
}

void RecordingPresenter::dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) {
  if (!controller || !controller->presentingViewController()) return;
  const auto self = controller;  // the caller's reference may be the one that presenting keeps
  if (const auto above = self->presentedViewController()) dismiss(above, animated);
  dismissals_.push_back({self, animated});
  self->viewWillDisappear(animated);
  self->unlink();
  self->viewDidDisappear(animated);
  if (application_) application_->screenDisappears();
}

void RecordingPresenter::setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>&) {
  ++statusBarUpdates_;
}

RecordingWebView::RecordingWebView(ui::WebViewConfiguration configuration, ui::Rect frame_)
    : configuration_(std::move(configuration)) {
  frame = frame_;
}

void RecordingWebView::addMessageHandler(const std::string& name,
                                         std::weak_ptr<ui::ScriptMessageHandler> handler) {
  configuration_.messageHandlers.push_back({name, std::move(handler)});
}

void RecordingWebView::loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) {
  loads_.push_back({html, baseUrl, {}, 0});
}

void RecordingWebView::load(const std::string& url, double timeout) {
  loads_.push_back({{}, std::nullopt, url, timeout});
}

void RecordingWebView::evaluateJavaScript(const std::string& script,
                                          std::function<void(Result<JSONAny>)> answer) {
  evaluations_.push_back({script, std::move(answer)});
}

bool RecordingWebView::post(const std::string& name, const JSONAny& body) {
  const auto self = shared_from_this();
  for (const auto& entry : configuration_.messageHandlers) {
    if (entry.name != name) continue;
    const auto handler = entry.handler.lock();
    if (!handler) continue;
    handler->didReceive(name, body);
    return true;
  }
  return false;
}

void RecordingWebView::finishNavigation() {
  if (const auto delegate = navigationDelegate()) delegate->didFinishNavigation();
}

void RecordingWebView::failNavigation(const Error& error) {
  if (const auto delegate = navigationDelegate()) delegate->didFailNavigation(error);
}

bool RecordingWebView::allowsNavigation(const std::string& url) const {
  const auto delegate = navigationDelegate();
  return !delegate || delegate->allowsNavigation(url);
}

std::optional<RecordingWebView::Evaluation> RecordingWebView::takeEvaluation() {
  if (evaluations_.empty()) return std::nullopt;
  auto evaluation = std::move(evaluations_.front());
  evaluations_.erase(evaluations_.begin());
  return evaluation;
}

std::shared_ptr<ui::WebView> RecordingWebViews::makeWebView(ui::WebViewConfiguration configuration,
                                                            ui::Rect frame) {
  auto made = std::make_shared<RecordingWebView>(std::move(configuration), frame);
  last_ = made;
  return made;
}

}  // namespace VorselKelp::testing_platform
