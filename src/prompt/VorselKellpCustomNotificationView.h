#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VorselKelp/ui/ViewController.h"
#include "VorselKelp/ui/WebView.h"
#include "core/CoreContext.h"
#include "prompt/LoggingMessageHandler.h"
#include "prompt/NotificationPromtHelper.h"

namespace VorselKelp {

/// The publisher's page that asks whether the user wants to be asked for the permission: transparent, over
/// the whole application, and gone with the first thing that it posts. Main thread.
class VorselKellpCustomNotificationView final : public ui::ViewController,
                                                public ui::ScriptMessageHandler,
                                                public ui::NavigationDelegate {
 public:
  /// `agreed` runs when the page answers that the user agrees, after the page has been dismissed.
  VorselKellpCustomNotificationView(std::shared_ptr<CoreContext> context, std::function<void()> agreed);

  /// An error when the page could not run, and would lie over the application for ever.
  [[nodiscard]] Status check() const { return promtHelper_.check(); }

  void loadView() override;
  void viewDidAppear(bool animated) override;
  void didReceive(const std::string& name, const JSONAny& body) override;
  /// Like an answer of the page that says nothing: it is dismissed.
  bool accessibilityPerformEscape() override;

  /// Null until the view is loaded.
  [[nodiscard]] const std::shared_ptr<ui::WebView>& webView() const { return webView_; }

 private:
  void answer(const std::string& text);

  std::shared_ptr<CoreContext> context_;
  std::function<void()> agreed_;
  NotificationPromtHelper promtHelper_;
  std::shared_ptr<LoggingMessageHandler> console_ = std::make_shared<LoggingMessageHandler>();
  std::shared_ptr<ui::WebView> webView_;
  bool answered_ = false;
};

}  // namespace VorselKelp
