#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/WebViews.h"
#include "VorselKelpGtk/WidgetWebView.h"

namespace VorselKelp::webkit {

/// What somebody who waits for pages hears of one. Main thread.
struct PageEvents {
  /// A load begins, the application's or the page's own. What it returns is kept until the load is over.
  std::function<std::shared_ptr<void>()> loading;
  /// A page has been loaded with all that belongs to it, or has failed. `handlers` are the names under which
  /// it can post messages, `load` is what `loading` returned.
  std::function<void(ui::WebView& page, const std::vector<std::string>& handlers, std::shared_ptr<void> load)>
      loaded;
};

/// A web page in WebKitGTK, in its sandbox and with a session of its own that keeps nothing. Every load of a
/// page is reported, whether the application began it or the page; one that another takes the place of is
/// not. Main thread.
VORSELKELP_API std::shared_ptr<gtk::WidgetWebView> makeWebView(ui::WebViewConfiguration configuration,
                                                               PageEvents events = {});

VORSELKELP_API std::shared_ptr<platform::WebViews> makeWebViews();

}  // namespace VorselKelp::webkit
