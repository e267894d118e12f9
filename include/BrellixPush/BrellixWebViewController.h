#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/NavigationBar.h"
#include "VorselKelp/ui/ViewController.h"
#include "VorselKelp/ui/WebView.h"

namespace VorselKelp {
class CoreContext;
}

namespace BrellixPush {

/// A web page on a screen of its own, under a bar with its title and a button that closes it. The application
/// presents it; install a platform first. Made with std::make_shared. Main thread.
class VORSELKELP_API BrellixWebViewController : public VorselKelp::ui::ViewController,
                                                public VorselKelp::ui::NavigationDelegate {
 public:
  /// The page at `url` is loaded together with the view. One that can't be loaded shows as "Error".
  explicit BrellixWebViewController(std::string url);
  /// Not a way to make one: stops the process.
  [[noreturn]] explicit BrellixWebViewController(const VorselKelp::ui::Coder& coder);

  void viewDidLoad() override;

  /// Closes the screen, animated.
  void dismissWebView();

  bool allowsNavigation(const std::string&) override { return true; }
  void didFinishNavigation() override;
  void didFailNavigation(const VorselKelp::Error& error) override;

  /// Null until the view is loaded.
  [[nodiscard]] const std::shared_ptr<VorselKelp::ui::WebView>& webView() const { return webView_; }
  [[nodiscard]] const std::shared_ptr<VorselKelp::ui::NavigationBar>& navigationBar() const {
    return navigationBar_;
  }
  [[nodiscard]] const std::shared_ptr<VorselKelp::ui::ActivityIndicator>& activityIndicator() const {
    return activityIndicator_;
  }
  [[nodiscard]] const std::string& url() const { return url_; }

 private:
  void fillBar();
  void layOut();

  std::shared_ptr<VorselKelp::CoreContext> context_;
  std::shared_ptr<VorselKelp::ui::WebView> webView_;
  std::shared_ptr<VorselKelp::ui::ActivityIndicator> activityIndicator_ =
      std::make_shared<VorselKelp::ui::ActivityIndicator>();
  std::string url_;
  std::shared_ptr<VorselKelp::ui::NavigationBar> navigationBar_ =
      std::make_shared<VorselKelp::ui::NavigationBar>();
};

}  // namespace BrellixPush
