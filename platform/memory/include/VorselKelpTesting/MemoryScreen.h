#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/platform/WebViews.h"
#include "VorselKelpTesting/MemoryApplication.h"

namespace VorselKelp::testing_platform {

/// Presents at once and in order, without drawing anything: controllers appear, are laid out once, and go.
/// Frames are what the test makes of them. Main thread.
class VORSELKELP_API RecordingPresenter final : public platform::ViewPresenter {
 public:
  /// `application`, which may be null, tells its screen observers.
  explicit RecordingPresenter(std::shared_ptr<MemoryApplication> application = nullptr)
      : application_(std::move(application)) {}

  /// The root of the key window; without one there is no window.
  void setRootViewController(std::shared_ptr<ui::ViewController> root) { root_ = std::move(root); }

  std::shared_ptr<ui::ViewController> rootViewController() override { return root_; }
  void present(const std::shared_ptr<ui::ViewController>& controller,
               const std::shared_ptr<ui::ViewController>& from, bool animated) override;
  void dismiss(const std::shared_ptr<ui::ViewController>& controller, bool animated) override;
  void setNeedsStatusBarAppearanceUpdate(const std::shared_ptr<ui::ViewController>& controller) override;

  struct Change {
    std::weak_ptr<ui::ViewController> controller;
    bool animated = false;
  };
  [[nodiscard]] const std::vector<Change>& presentations() const { return presentations_; }
  [[nodiscard]] const std::vector<Change>& dismissals() const { return dismissals_; }
  [[nodiscard]] std::size_t statusBarUpdates() const { return statusBarUpdates_; }

 private:
  std::shared_ptr<ui::ViewController> root_;
  const std::shared_ptr<MemoryApplication> application_;
  std::vector<Change> presentations_;
  std::vector<Change> dismissals_;
  std::size_t statusBarUpdates_ = 0;
};

/// A web view without an engine: keeps what it was to show, and says what the test has it say. Main thread.
class VORSELKELP_API RecordingWebView final : public ui::WebView {
 public:
  RecordingWebView(ui::WebViewConfiguration configuration, ui::Rect frame);

  struct Load {
    std::string html;  ///< empty for a load by URL
    std::optional<std::string> baseUrl;
    std::string url;
    double timeout = 0;
  };
  struct Evaluation {
    std::string script;
    std::function<void(Result<JSONAny>)> answer;
  };

  void addMessageHandler(const std::string& name, std::weak_ptr<ui::ScriptMessageHandler> handler) override;
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) override;
  void load(const std::string& url, double timeout) override;
  void evaluateJavaScript(const std::string& script, std::function<void(Result<JSONAny>)> answer) override;

  [[nodiscard]] const ui::WebViewConfiguration& configuration() const { return configuration_; }
  [[nodiscard]] const std::vector<Load>& loads() const { return loads_; }

  /// The page posts; false when nobody hears messages of this name.
  bool post(const std::string& name, const JSONAny& body);
  void finishNavigation();
  void failNavigation(const Error& error);
  [[nodiscard]] bool allowsNavigation(const std::string& url) const;
  /// The oldest script that was not answered; absent when there is none.
  std::optional<Evaluation> takeEvaluation();

 private:
  ui::WebViewConfiguration configuration_;
  std::vector<Load> loads_;
  std::vector<Evaluation> evaluations_;
};

class VORSELKELP_API RecordingWebViews final : public platform::WebViews {
 public:
  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override;
  /// The one made last, while it lives.
  [[nodiscard]] std::shared_ptr<RecordingWebView> last() const { return last_.lock(); }

 private:
  std::weak_ptr<RecordingWebView> last_;
};

/// Keeps every address that the extension opened.
class RecordingExtensionContext final : public platform::ExtensionContext {
 public:
  void open(const std::string& url) override { opened.push_back(url); }
  std::vector<std::string> opened;
};

}  // namespace VorselKelp::testing_platform
