#include "views/Painter.h"

#include <algorithm>
#include <cmath>

namespace VorselKelp::gtk {
namespace {

PangoAlignment pangoAlignment(ui::TextAlignment alignment) {
  switch (alignment) {
    case ui::TextAlignment::center:
      return PANGO_ALIGN_CENTER;
    case ui::TextAlignment::right:
      return PANGO_ALIGN_RIGHT;
    case ui::TextAlignment::natural:
    case ui::TextAlignment::left:
      break;
  }
  return PANGO_ALIGN_LEFT;
}

graphene_rect_t fitted(ui::ContentMode mode, double imageWidth, double imageHeight, double width,
                       double height) {
  double scaleX = width / imageWidth;
  double scaleY = height / imageHeight;
  if (mode == ui::ContentMode::center) scaleX = scaleY = 1;
  if (mode == ui::ContentMode::scaleAspectFit) scaleX = scaleY = std::min(scaleX, scaleY);
  if (mode == ui::ContentMode::scaleAspectFill) scaleX = scaleY = std::max(scaleX, scaleY);
  const double shownWidth = imageWidth * scaleX;
  const double shownHeight = imageHeight * scaleY;
  return GRAPHENE_RECT_INIT(static_cast<float>((width - shownWidth) / 2),
                            static_cast<float>((height - shownHeight) / 2), static_cast<float>(shownWidth),
                            static_cast<float>(shownHeight));
}

ObjectPtr<GdkTexture> textureOf(const ui::ImagePtr& image) {
  // The texture keeps the picture whose pixels it shows.
  auto* keeper = new ui::ImagePtr(image);
  const auto pixels = image->pixels();
  auto* bytes = g_bytes_new_with_free_func(
      pixels.data(), pixels.size(), [](gpointer kept) { delete static_cast<ui::ImagePtr*>(kept); }, keeper);
  ObjectPtr<GdkTexture> texture(gdk_memory_texture_new(image->width(), image->height(), GDK_MEMORY_R8G8B8A8,
                                                       bytes, static_cast<gsize>(image->width()) * 4));
  g_bytes_unref(bytes);
  return texture;
}

}  // namespace

GdkRGBA rgba(const ui::Color& color) {
  return {static_cast<float>(color.red), static_cast<float>(color.green), static_cast<float>(color.blue),
          static_cast<float>(color.alpha)};
}

bool isDark(GtkWidget* widget) {
  GdkRGBA text;
  gtk_style_context_get_color(gtk_widget_get_style_context(widget), &text);
  return text.red + text.green + text.blue > 1.5F;
}

double textScale(GtkWidget* widget) {
  constexpr double usual = 96 * 1024.0;
  int dpi = -1;
  g_object_get(gtk_widget_get_settings(widget), "gtk-xft-dpi", &dpi, nullptr);
  return dpi > 0 ? dpi / usual : 1;
}

ObjectPtr<PangoLayout> layoutText(GtkWidget* widget, const TextStyle& style, double width) {
  ObjectPtr<PangoLayout> layout(gtk_widget_create_pango_layout(widget, nullptr));
  gchar* valid = g_utf8_make_valid(style.text.data(), static_cast<gssize>(style.text.size()));
  pango_layout_set_text(layout.get(), valid, -1);
  g_free(valid);
  auto* font = pango_font_description_from_string("Sans");
  pango_font_description_set_absolute_size(font, style.font.size * textScale(widget) * PANGO_SCALE);
  if (style.font.bold) pango_font_description_set_weight(font, PANGO_WEIGHT_BOLD);
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  pango_layout_set_alignment(layout.get(), pangoAlignment(style.alignment));
  pango_layout_set_single_paragraph_mode(layout.get(), style.lines == 1);
  if (style.lines > 0) {
    pango_layout_set_height(layout.get(), -style.lines);
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
  }
  pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  if (width >= 0) pango_layout_set_width(layout.get(), static_cast<int>(width * PANGO_SCALE));
  return layout;
}

void paintText(GtkSnapshot* snapshot, GtkWidget* widget, const TextStyle& style, double width,
               double height) {
  const auto layout = layoutText(widget, style, width);
  int textHeight = 0;
  pango_layout_get_pixel_size(layout.get(), nullptr, &textHeight);
  const auto color = rgba(style.color);
  const graphene_point_t origin{0, static_cast<float>(std::max(0.0, std::floor((height - textHeight) / 2)))};
  gtk_snapshot_save(snapshot);
  gtk_snapshot_translate(snapshot, &origin);
  gtk_snapshot_append_layout(snapshot, layout.get(), &color);
  gtk_snapshot_restore(snapshot);
}

void paintBox(GtkSnapshot* snapshot, const ui::View& view, double width, double height) {
  const auto bounds = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
  GskRoundedRect outline;
  gsk_rounded_rect_init_from_rect(&outline, &bounds, static_cast<float>(view.cornerRadius.get()));
  if (view.backgroundColor.get()) {
    const auto color = rgba(*view.backgroundColor.get());
    gtk_snapshot_push_rounded_clip(snapshot, &outline);
    gtk_snapshot_append_color(snapshot, &color, &bounds);
    gtk_snapshot_pop(snapshot);
  }
  if (view.borderWidth.get() > 0) {
    const auto edge = static_cast<float>(view.borderWidth.get());
    const float widths[]{edge, edge, edge, edge};
    const auto color = rgba(view.borderColor);
    const GdkRGBA colors[]{color, color, color, color};
    gtk_snapshot_append_border(snapshot, &outline, widths, colors);
  }
}

void Picture::paint(GtkSnapshot* snapshot, const ui::ImagePtr& image, ui::ContentMode mode, double width,
                    double height) {
  if (!image || image->width() <= 0 || image->height() <= 0 || width <= 0 || height <= 0) return;
  if (image != image_) {
    image_ = image;
    texture_ = textureOf(image);
  }
  const auto bounds = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
  const auto place = fitted(mode, image->width(), image->height(), width, height);
  gtk_snapshot_push_clip(snapshot, &bounds);
  gtk_snapshot_append_texture(snapshot, texture_.get(), &place);
  gtk_snapshot_pop(snapshot);
}

}  // namespace VorselKelp::gtk
