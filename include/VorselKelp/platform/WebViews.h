#pragma once

#include <memory>

#include "VorselKelp/ui/WebView.h"

namespace VorselKelp::platform {

/// The script message handler on which the permission page gives its answer. For platforms without a user.
inline constexpr const char* answerBridge = "JSBridge";

/// Makes web views. Main thread.
class WebViews {
 public:
  virtual ~WebViews() = default;
  /// Never null; where the system has no web engine, every load fails with an error to the navigation
  /// delegate.
  virtual std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration,
                                                   ui::Rect frame) = 0;
};

}  // namespace VorselKelp::platform
