#pragma once

#include <gtk/gtk.h>

#include <string>

/// The window of an ordinary application: a list of headlines, and the article that is open. Main thread.
class ReaderWindow {
 public:
  ReaderWindow() = default;
  ReaderWindow(const ReaderWindow&) = delete;
  ReaderWindow& operator=(const ReaderWindow&) = delete;

  /// Opens the window, or brings it to the front.
  void show(GtkApplication* application);
  /// Null while there is no window.
  [[nodiscard]] GtkOverlay* overlay() const { return overlay_; }
  /// Shows an article; false when there is no window to show it in.
  bool open(const std::string& url);

 private:
  static void onDestroy(GtkWidget*, gpointer self);

  GtkWindow* window_ = nullptr;
  GtkOverlay* overlay_ = nullptr;
  GtkLabel* article_ = nullptr;
};
