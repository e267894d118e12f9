#include "VorselKelpGtk/ViewWidget.h"

#include <utility>

#include "views/ViewRenderer.h"

namespace VorselKelp::gtk {
namespace {

class RenderedTree final : public ViewWidget {
 public:
  explicit RenderedTree(std::shared_ptr<ui::View> root)
      : renderer_(std::make_shared<ViewRenderer>(std::move(root), [this] { repaint(); })) {
    renderer_->start();
    gtk_widget_set_hexpand(widget(), TRUE);
    gtk_widget_set_vexpand(widget(), TRUE);
    // After the toolkit's own handler, which places the widgets.
    g_signal_connect_after(widget(), "realize", G_CALLBACK(&RenderedTree::onRealize), this);
    g_signal_connect(widget(), "unrealize", G_CALLBACK(&RenderedTree::onUnrealize), this);
    g_signal_connect_swapped(gtk_widget_get_settings(widget()), "notify::gtk-xft-dpi",
                             G_CALLBACK(+[](RenderedTree* self) { self->renderer_->restyle(); }), this);
  }
  RenderedTree(const RenderedTree&) = delete;
  RenderedTree& operator=(const RenderedTree&) = delete;
  ~RenderedTree() override {
    renderer_->stop();
    onUnrealize(widget(), this);
    g_signal_handlers_disconnect_by_data(gtk_widget_get_settings(widget()), this);
    g_signal_handlers_disconnect_by_data(widget(), this);
  }

  [[nodiscard]] GtkWidget* widget() const override { return renderer_->widget(); }
  [[nodiscard]] bool painted() const override { return painted_; }
  void repaint() override {
    painted_ = false;
    gtk_widget_queue_draw(widget());
  }
  void flush() override {
    const auto renderer = renderer_;  // what is laid out may take this away
    renderer->flush();
  }
  [[nodiscard]] ui::Rect boundsOf(ui::View& view) const override { return renderer_->boundsOf(view); }

 private:
  static void onRealize(GtkWidget* widget, RenderedTree* self) {
    auto* clock = gtk_widget_get_frame_clock(widget);
    g_signal_connect_after(clock, "layout", G_CALLBACK(&RenderedTree::onLayout), self);
    g_signal_connect(clock, "after-paint", G_CALLBACK(&RenderedTree::onPaint), self);
  }
  static void onUnrealize(GtkWidget* widget, RenderedTree* self) {
    if (auto* clock = gtk_widget_get_frame_clock(widget)) g_signal_handlers_disconnect_by_data(clock, self);
  }
  static void onLayout(GdkFrameClock*, RenderedTree* self) { self->flush(); }
  static void onPaint(GdkFrameClock*, RenderedTree* self) {
    if (!self->renderer_->pending()) self->painted_ = true;
  }

  const std::shared_ptr<ViewRenderer> renderer_;
  bool painted_ = false;  ///< the picture on the screen is what the views are
};

}  // namespace

std::shared_ptr<ViewWidget> makeViewWidget(std::shared_ptr<ui::View> root) {
  return std::make_shared<RenderedTree>(std::move(root));
}

Status writePicture(GtkWidget* widget, const std::string& path) {
  auto* native = gtk_widget_get_native(widget);
  auto* renderer = native != nullptr ? gtk_native_get_renderer(native) : nullptr;
  if (renderer == nullptr) return Error{"The window is not on a screen, so there is no picture of it"};
  ObjectPtr<GdkPaintable> paintable(gtk_widget_paintable_new(widget));
  auto* snapshot = gtk_snapshot_new();
  const double width = gtk_widget_get_width(widget);
  const double height = gtk_widget_get_height(widget);
  gdk_paintable_snapshot(paintable.get(), snapshot, width, height);
  auto* node = gtk_snapshot_free_to_node(snapshot);
  if (node == nullptr) return Error{"The window shows nothing, so there is no picture of it"};
  const auto area = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
  ObjectPtr<GdkTexture> texture(gsk_renderer_render_texture(renderer, node, &area));
  gsk_render_node_unref(node);
  if (!gdk_texture_save_to_png(texture.get(), path.c_str())) return Error{"Cannot write " + path};
  return Done{};
}

}  // namespace VorselKelp::gtk
