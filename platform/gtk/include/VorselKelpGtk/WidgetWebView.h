#pragma once

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/WebView.h"

using GtkWidget = struct _GtkWidget;

namespace VorselKelp::gtk {

/// A web view that is a widget of the toolkit's.
class VORSELKELP_API WidgetWebView : public ui::WebView {
 public:
  /// Lives as long as the view, and longer while it is shown.
  [[nodiscard]] virtual GtkWidget* widget() const = 0;
};

}  // namespace VorselKelp::gtk
