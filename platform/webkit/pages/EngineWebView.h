#pragma once

#include <webkit/webkit.h>

#include <memory>
#include <string>

#include "VorselKelpWebKit/WebViews.h"
#include "bridge/TopFrameBridge.h"
#include "glib/Pointers.h"

namespace VorselKelp::webkit {

/// See makeWebView(). Make it with std::make_shared. Main thread.
class EngineWebView final : public gtk::WidgetWebView {
 public:
  EngineWebView(ui::WebViewConfiguration configuration, PageEvents events);
  ~EngineWebView() override;

  [[nodiscard]] GtkWidget* widget() const override { return GTK_WIDGET(view_); }

  void addMessageHandler(const std::string& name, std::weak_ptr<ui::ScriptMessageHandler> handler) override;
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) override;
  void load(const std::string& url, double timeout) override;
  void evaluateJavaScript(const std::string& script, std::function<void(Result<JSONAny>)> answer) override;

 private:
  void connect();
  [[nodiscard]] std::vector<std::string> handlerNames() const;
  [[nodiscard]] std::shared_ptr<void> newLoad() const;
  /// `url`: what the engine will say that it shows.
  void beginLoad(std::string url);
  void endLoad(const Error* error);
  void started();
  void committed();
  void waitForSuccessor();
  void showBackground();
  void received(JSCValue* value);

  static void onLoad(WebKitWebView*, WebKitLoadEvent event, EngineWebView* self);
  static gboolean onFailure(WebKitWebView*, WebKitLoadEvent, const char* url, GError* error,
                            EngineWebView* self);
  static gboolean onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                           EngineWebView* self);
  static void onTermination(WebKitWebView*, WebKitWebProcessTerminationReason reason, EngineWebView* self);
  static void onMessage(WebKitUserContentManager*, JSCValue* value, EngineWebView* self);

  ui::WebViewConfiguration configuration_;
  const PageEvents events_;
  const TopFrameBridge bridge_ = TopFrameBridge::make();
  freedesktop::ObjectPtr<WebKitUserContentManager> content_;
  WebKitWebView* view_;
  std::shared_ptr<void> loading_;  ///< set while a page is being loaded
  std::string asked_;              ///< the page that was asked for last
  bool started_ = false;           ///< the load under way is the one that the engine speaks of
  bool cancelled_ = false;         ///< it was ended before its time
  guint timeout_ = 0;
  guint succession_ = 0;
};

}  // namespace VorselKelp::webkit
