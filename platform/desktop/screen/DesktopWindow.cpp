#include "screen/DesktopWindow.h"

#include <algorithm>

namespace VorselKelp::desktop {

DesktopWindow::DesktopWindow(const std::string& title, double width, double height)
    : window_(GTK_WINDOW(gtk_window_new())), stage_(GTK_OVERLAY(gtk_overlay_new())), size_{width, height} {
  gtk_window_set_title(window_, title.c_str());
  gtk_window_set_default_size(window_, static_cast<int>(width), static_cast<int>(height));
  gtk_window_set_decorated(window_, FALSE);
  gtk_window_set_child(window_, GTK_WIDGET(stage_));
  // Which widget has the keyboard is no part of what a picture shows.
  gtk_window_set_focus_visible(window_, FALSE);
  g_signal_connect(window_, "close-request", G_CALLBACK(&DesktopWindow::onClose), this);
  g_signal_connect_after(window_, "realize", G_CALLBACK(&DesktopWindow::onRealize), this);
}

DesktopWindow::~DesktopWindow() {
  g_signal_handlers_disconnect_by_data(window_, this);
  if (auto* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window_))) {
    g_signal_handlers_disconnect_by_data(clock, this);
  }
  while (!layers_.empty()) remove(*layers_.back().controller);
  gtk_window_destroy(window_);
}

gboolean DesktopWindow::onClose(GtkWindow* window, DesktopWindow* self) {
  gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  const auto left = self->left_;
  if (left) left();
  return TRUE;  // destroyed by its owner alone
}

void DesktopWindow::onRealize(GtkWidget* window, DesktopWindow* self) {
  // After the toolkit's own handler, which places the widgets.
  g_signal_connect_after(gtk_widget_get_frame_clock(window), "layout", G_CALLBACK(&DesktopWindow::onLayout),
                         self);
  g_signal_connect(gtk_widget_get_frame_clock(window), "after-paint", G_CALLBACK(&DesktopWindow::onPaint),
                   self);
}

void DesktopWindow::onPaint(GdkFrameClock*, DesktopWindow* self) {
  const auto pending = [](const Layer& layer) { return layer.renderer->pending(); };
  if (std::ranges::none_of(self->layers_, pending)) self->painted_ = true;
}

void DesktopWindow::onLayout(GdkFrameClock*, DesktopWindow* self) {
  self->flush();
}

void DesktopWindow::show(const std::shared_ptr<ui::ViewController>& root) {
  if (root->view()) push(root);
  gtk_window_present(window_);
}

void DesktopWindow::push(const std::shared_ptr<ui::ViewController>& controller) {
  const auto& view = controller->viewIfLoaded();
  if (!view) return;
  auto renderer = std::make_shared<ViewRenderer>(view, [this] {
    painted_ = false;
    gtk_widget_queue_draw(GTK_WIDGET(window_));
  });
  renderer->start();
  painted_ = false;
  auto* widget = renderer->widget();
  gtk_widget_set_hexpand(widget, TRUE);
  gtk_widget_set_vexpand(widget, TRUE);
  if (layers_.empty()) {
    gtk_overlay_set_child(stage_, widget);
  } else {
    gtk_overlay_add_overlay(stage_, widget);
  }
  layers_.push_back({controller, std::move(renderer)});
}

void DesktopWindow::remove(const ui::ViewController& controller) {
  const auto layer =
      std::ranges::find_if(layers_, [&](const Layer& each) { return each.controller.get() == &controller; });
  if (layer == layers_.end()) return;
  const auto gone = std::move(*layer);
  layers_.erase(layer);
  gone.renderer->stop();
  painted_ = false;
  if (gtk_overlay_get_child(stage_) == gone.renderer->widget()) {
    gtk_overlay_set_child(stage_, nullptr);
  } else {
    gtk_overlay_remove_overlay(stage_, gone.renderer->widget());
  }
}

ui::Rect DesktopWindow::boundsOf(ui::View& view) const {
  for (const auto& layer : layers_) {
    if (layer.controller->viewIfLoaded()->contains(view)) return layer.renderer->boundsOf(view);
  }
  return {};
}

bool DesktopWindow::settled() const {
  return painted_;
}

void DesktopWindow::flush() {
  const auto layers = layers_;
  for (const auto& layer : layers) layer.renderer->flush();
}

Status DesktopWindow::writePicture(const std::string& path) {
  auto* renderer = gtk_native_get_renderer(GTK_NATIVE(window_));
  if (renderer == nullptr) return Error{"The window is not on a screen, so there is no picture of it"};
  ObjectPtr<GdkPaintable> paintable(gtk_widget_paintable_new(GTK_WIDGET(window_)));
  auto* snapshot = gtk_snapshot_new();
  const double width = gtk_widget_get_width(GTK_WIDGET(window_));
  const double height = gtk_widget_get_height(GTK_WIDGET(window_));
  gdk_paintable_snapshot(paintable.get(), snapshot, width, height);
  auto* node = gtk_snapshot_free_to_node(snapshot);
  if (node == nullptr) return Error{"The window shows nothing, so there is no picture of it"};
  const auto area = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(width), static_cast<float>(height));
  ObjectPtr<GdkTexture> texture(gsk_renderer_render_texture(renderer, node, &area));
  gsk_render_node_unref(node);
  if (!gdk_texture_save_to_png(texture.get(), path.c_str())) return Error{"Cannot write " + path};
  return Done{};
}

}  // namespace VorselKelp::desktop
