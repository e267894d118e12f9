#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelpGtk/Stage.h"
#include "VorselKelpGtk/ViewWidget.h"

namespace VorselKelp::simulator {

/// The window of a process: its root controller's view, and the stage above it. Main thread.
class ProcessWindow {
 public:
  /// Shows nothing before show(). `width` and `height` in points, which are the desktop's pixels.
  ProcessWindow(const std::string& title, double width, double height);
  ProcessWindow(const ProcessWindow&) = delete;
  ProcessWindow& operator=(const ProcessWindow&) = delete;
  ~ProcessWindow();

  void show(const std::shared_ptr<ui::ViewController>& root,
            std::function<void(bool appeared)> screenChanged);
  /// `left` runs when the user closes the window, which stays until this object goes.
  void whenLeft(std::function<void()> left) { left_ = std::move(left); }

  /// Null before show().
  [[nodiscard]] const std::shared_ptr<gtk::Stage>& stage() const { return stage_; }
  [[nodiscard]] bool mapped() const { return gtk_widget_get_mapped(GTK_WIDGET(window_)) != FALSE; }
  /// Whether every view has been laid out and painted as it is now.
  [[nodiscard]] bool settled() const { return stage_->painted() && (!root_ || root_->painted()); }
  /// The window's contents as a PNG file.
  Status writePicture(const std::string& path);

 private:
  static gboolean onClose(GtkWindow*, ProcessWindow* self);

  GtkWindow* window_;
  GtkOverlay* overlay_;
  std::shared_ptr<ui::ViewController> controller_;
  std::shared_ptr<gtk::ViewWidget> root_;  ///< null for a root without a view
  std::shared_ptr<gtk::Stage> stage_;
  std::function<void()> left_;
};

}  // namespace VorselKelp::simulator
