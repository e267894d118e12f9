#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/ui/View.h"

using GtkWidget = struct _GtkWidget;

namespace VorselKelp::gtk {

/// A tree of views as one widget, which keeps itself as the views are with every frame of the window that it
/// is in. The widget takes all the room that it is given. It lives as long as this object, which may go at
/// any time: the widget is then to be taken out of its window by whoever put it there. Texts are as large as
/// the user's settings want them. What can be tapped is reached with Tab and pressed with Enter or Space;
/// what has no text has a name for readers of the screen, translated by the text domain "vorselkelp". Main
/// thread.
class ViewWidget {
 public:
  virtual ~ViewWidget() = default;

  [[nodiscard]] virtual GtkWidget* widget() const = 0;
  /// Whether every view has been laid out and painted as it is now.
  [[nodiscard]] virtual bool painted() const = 0;
  /// Has the picture made again, although the views have not changed.
  virtual void repaint() = 0;
  /// Does at once what waits for the next picture.
  virtual void flush() = 0;
  /// Where a view is, in the widget; an empty rectangle for one that is not in it.
  [[nodiscard]] virtual ui::Rect boundsOf(ui::View& view) const = 0;
};

/// `root` is shown by one widget at a time.
VORSELKELP_API std::shared_ptr<ViewWidget> makeViewWidget(std::shared_ptr<ui::View> root);

/// What a widget shows now, as a PNG file. An error for one that is not on a screen.
VORSELKELP_API Status writePicture(GtkWidget* widget, const std::string& path);

}  // namespace VorselKelp::gtk
