#include "ReaderWindow.h"

void ReaderWindow::show(GtkApplication* application) {
  if (window_ != nullptr) return gtk_window_present(window_);
  window_ = GTK_WINDOW(gtk_application_window_new(application));
  gtk_window_set_title(window_, "Reader");
  gtk_window_set_default_size(window_, 480, 640);
  article_ = GTK_LABEL(gtk_label_new("Today's articles"));
  gtk_label_set_wrap(article_, TRUE);
  overlay_ = GTK_OVERLAY(gtk_overlay_new());
  gtk_overlay_set_child(overlay_, GTK_WIDGET(article_));
  gtk_window_set_child(window_, GTK_WIDGET(overlay_));
  g_signal_connect(window_, "destroy", G_CALLBACK(&ReaderWindow::onDestroy), this);
  gtk_window_present(window_);
}

bool ReaderWindow::open(const std::string& url) {
  if (window_ == nullptr) return false;
  gtk_label_set_text(article_, ("The article at " + url).c_str());
  gtk_window_set_title(window_, url.c_str());
  return true;
}

void ReaderWindow::onDestroy(GtkWidget*, gpointer self) {
  auto& reader = *static_cast<ReaderWindow*>(self);
  reader.window_ = nullptr;
  reader.overlay_ = nullptr;
  reader.article_ = nullptr;
}
