#pragma once

#include <webkit/webkit.h>

#include <memory>
#include <string>

#include "screen/Activity.h"
#include "views/Painter.h"
#include "web/TopFrameBridge.h"
#include "web/WidgetWebView.h"

namespace VorselKelp::desktop {

/// How long a page gets to be painted after it was loaded.
inline constexpr double paintingSeconds = 0.3;

/// A web page in WebKitGTK, in its sandbox and with a session of its own that keeps nothing. Every load of a
/// page is reported, whether the application began it or the page; one that another takes the place of is
/// not. Make it with std::make_shared. Main thread.
class DesktopWebView final : public WidgetWebView {
 public:
  /// Runs when a page has been loaded with all that belongs to it, or has failed. The screen counts as busy
  /// while a page is being loaded, and after that for as long as `busy` is kept.
  using Finished = std::function<void(DesktopWebView&, std::shared_ptr<void> busy)>;

  DesktopWebView(ui::WebViewConfiguration configuration, std::shared_ptr<Activity> activity,
                 Finished finished);
  ~DesktopWebView() override;

  [[nodiscard]] GtkWidget* widget() const override { return GTK_WIDGET(view_); }

  void addMessageHandler(const std::string& name, std::weak_ptr<ui::ScriptMessageHandler> handler) override;
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) override;
  void load(const std::string& url, double timeout) override;
  void evaluateJavaScript(const std::string& script, std::function<void(Result<JSONAny>)> answer) override;

  /// Keeps the screen busy for as long as this view is there.
  void keepBusy(std::shared_ptr<void> busy) { waiting_ = std::move(busy); }
  [[nodiscard]] bool hears(const std::string& name) const;

 private:
  void connect();
  /// `url`: what the engine will say that it shows.
  void beginLoad(std::string url);
  void endLoad(const Error* error);
  void started();
  void committed();
  void waitForSuccessor();
  void showBackground();
  void received(JSCValue* value);

  static void onLoad(WebKitWebView*, WebKitLoadEvent event, DesktopWebView* self);
  static gboolean onFailure(WebKitWebView*, WebKitLoadEvent, const char* url, GError* error,
                            DesktopWebView* self);
  static gboolean onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                           DesktopWebView* self);
  static void onTermination(WebKitWebView*, WebKitWebProcessTerminationReason reason, DesktopWebView* self);
  static void onMessage(WebKitUserContentManager*, JSCValue* value, DesktopWebView* self);

  ui::WebViewConfiguration configuration_;
  const std::shared_ptr<Activity> activity_;
  const Finished finished_;
  const TopFrameBridge bridge_ = TopFrameBridge::make();
  ObjectPtr<WebKitUserContentManager> content_;
  WebKitWebView* view_;
  std::shared_ptr<void> waiting_;
  std::shared_ptr<void> loading_;  ///< set while a page is being loaded
  std::string asked_;              ///< the page that was asked for last
  bool started_ = false;           ///< the load under way is the one that the engine speaks of
  bool cancelled_ = false;         ///< it was ended before its time
  guint timeout_ = 0;
  guint succession_ = 0;
};

}  // namespace VorselKelp::desktop
