#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>

#include "VorselKelp/ui/Button.h"
#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/Label.h"
#include "glib/Pointers.h"

namespace VorselKelp::gtk {

using freedesktop::ObjectPtr;

/// A text as a view shows it.
struct TextStyle {
  std::string text;
  ui::Font font;
  ui::Color color;
  ui::TextAlignment alignment = ui::TextAlignment::natural;
  int lines = 1;  ///< 0 for as many as it takes
};

GdkRGBA rgba(const ui::Color& color);

/// Whether the theme around the widget writes light on dark.
bool isDark(GtkWidget* widget);
/// How much larger than usual the user wants texts.
double textScale(GtkWidget* widget);

/// `width` in pixels, negative for no limit.
ObjectPtr<PangoLayout> layoutText(GtkWidget* widget, const TextStyle& style, double width);

/// Draws the text, in the middle of the height.
void paintText(GtkSnapshot* snapshot, GtkWidget* widget, const TextStyle& style, double width, double height);

/// Background and border of a view.
void paintBox(GtkSnapshot* snapshot, const ui::View& view, double width, double height);

/// A picture on its way to the screen, made again only when the picture is another one.
class Picture {
 public:
  void paint(GtkSnapshot* snapshot, const ui::ImagePtr& image, ui::ContentMode mode, double width,
             double height);

 private:
  ui::ImagePtr image_;
  ObjectPtr<GdkTexture> texture_;
};

}  // namespace VorselKelp::gtk
