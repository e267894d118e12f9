#include "window/ProcessWindow.h"

#include <utility>

namespace VorselKelp::simulator {

ProcessWindow::ProcessWindow(const std::string& title, double width, double height)
    : window_(GTK_WINDOW(gtk_window_new())), overlay_(GTK_OVERLAY(gtk_overlay_new())) {
  gtk_window_set_title(window_, title.c_str());
  gtk_window_set_default_size(window_, static_cast<int>(width), static_cast<int>(height));
  gtk_window_set_decorated(window_, FALSE);
  gtk_window_set_child(window_, GTK_WIDGET(overlay_));
  // Which widget has the keyboard is no part of what a picture shows.
  gtk_window_set_focus_visible(window_, FALSE);
  g_signal_connect(window_, "close-request", G_CALLBACK(&ProcessWindow::onClose), this);
}

ProcessWindow::~ProcessWindow() {
  g_signal_handlers_disconnect_by_data(window_, this);
  stage_ = nullptr;
  gtk_overlay_set_child(overlay_, nullptr);
  root_ = nullptr;
  gtk_window_destroy(window_);
}

gboolean ProcessWindow::onClose(GtkWindow* window, ProcessWindow* self) {
  gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  const auto left = self->left_;
  if (left) left();
  return TRUE;  // destroyed by its owner alone
}

void ProcessWindow::show(const std::shared_ptr<ui::ViewController>& root,
                         std::function<void(bool)> screenChanged) {
  controller_ = root;
  if (root->view()) {
    root_ = gtk::makeViewWidget(root->view());
    gtk_overlay_set_child(overlay_, root_->widget());
  }
  stage_ = gtk::makeStage({[overlay = overlay_] { return overlay; }, root, std::move(screenChanged)});
  gtk_window_present(window_);
}

Status ProcessWindow::writePicture(const std::string& path) {
  if (root_) root_->flush();
  stage_->flush();
  return gtk::writePicture(GTK_WIDGET(window_), path);
}

}  // namespace VorselKelp::simulator
