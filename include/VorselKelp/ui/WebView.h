#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

/// Hears what a page's script posts. Main thread.
class ScriptMessageHandler {
 public:
  virtual ~ScriptMessageHandler() = default;
  /// `body` is what window.webkit.messageHandlers.NAME.postMessage was given: a text for a text, else what
  /// JSON makes of it, null where that is nothing. Only what the top frame's page posts arrives.
  virtual void didReceive(const std::string& name, const JSONAny& body) = 0;
};

/// Hears how loading goes. Main thread.
class NavigationDelegate {
 public:
  virtual ~NavigationDelegate() = default;
  virtual bool allowsNavigation(const std::string& url) {
    (void)url;
    return true;
  }
  virtual void didFinishNavigation() {}
  virtual void didFailNavigation(const Error& error) { (void)error; }
};

/// A script that runs in every page before any script of its own.
struct UserScript {
  std::string source;
  bool mainFrameOnly = true;
};

struct WebViewConfiguration {
  struct Handler {
    std::string name;
    std::weak_ptr<ScriptMessageHandler> handler;
  };
  bool javaScriptEnabled = true;
  /// Scripts may open windows although the user did nothing.
  bool javaScriptCanOpenWindowsAutomatically = false;
  std::vector<UserScript> userScripts;
  std::vector<Handler> messageHandlers;
};

/// A web page as a view. Made by the platform (platform::WebViews). The page belongs to the view and goes
/// with it; nothing is called after that. Main thread.
class VORSELKELP_API WebView : public View {
 public:
  /// Whether something is painted under the page. What is not opaque shows what lies behind it, where the
  /// page itself paints nothing.
  Property<bool> opaque{*this, true};
  Property<Color> scrollBackgroundColor{*this, Color::white()};

  void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) { delegate_ = std::move(delegate); }

  /// Adds a handler for messages of this name; before the first page is loaded.
  virtual void addMessageHandler(const std::string& name, std::weak_ptr<ScriptMessageHandler> handler) = 0;
  /// Shows this page in place of the one before. Without a base URL its relative links lead nowhere.
  virtual void loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) = 0;
  /// `timeout`: seconds for the page to answer.
  virtual void load(const std::string& url, double timeout) = 0;
  /// `answer` gets the script's value once, later; an error when it threw or there is no page.
  virtual void evaluateJavaScript(const std::string& script, std::function<void(Result<JSONAny>)> answer) = 0;

  void accept(ViewVisitor& visitor) override;

 protected:
  /// Null when none is set, or it has gone.
  [[nodiscard]] std::shared_ptr<NavigationDelegate> navigationDelegate() const { return delegate_.lock(); }

 private:
  std::weak_ptr<NavigationDelegate> delegate_;
};

}  // namespace VorselKelp::ui
