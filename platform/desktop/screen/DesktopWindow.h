#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/ui/ViewController.h"
#include "views/ViewRenderer.h"

namespace VorselKelp::desktop {

/// The window of a process: its root controller's view, and above it those of the controllers that are
/// presented. Main thread.
class DesktopWindow {
 public:
  /// Shows nothing before show(). `width` and `height` in points, which are the desktop's pixels.
  DesktopWindow(const std::string& title, double width, double height);
  DesktopWindow(const DesktopWindow&) = delete;
  DesktopWindow& operator=(const DesktopWindow&) = delete;
  ~DesktopWindow();

  void show(const std::shared_ptr<ui::ViewController>& root);
  /// `left` runs when the user closes the window, which stays until this object goes.
  void whenLeft(std::function<void()> left) { left_ = std::move(left); }
  /// Puts the controller's view on top; its view must have been made.
  void push(const std::shared_ptr<ui::ViewController>& controller);
  void remove(const ui::ViewController& controller);

  [[nodiscard]] GtkWindow* window() const { return window_; }
  /// Where a view is in the window; an empty rectangle for one that is not in it.
  [[nodiscard]] ui::Rect boundsOf(ui::View& view) const;
  [[nodiscard]] bool mapped() const { return gtk_widget_get_mapped(GTK_WIDGET(window_)) != FALSE; }
  /// Whether every view has been laid out and painted as it is now.
  [[nodiscard]] bool settled() const;
  /// Does what waits for the next picture, in every view.
  void flush();
  /// The window's contents as a PNG file.
  Status writePicture(const std::string& path);

 private:
  static gboolean onClose(GtkWindow*, DesktopWindow* self);
  static void onRealize(GtkWidget*, DesktopWindow* self);
  static void onLayout(GdkFrameClock*, DesktopWindow* self);
  static void onPaint(GdkFrameClock*, DesktopWindow* self);

  struct Layer {
    std::shared_ptr<ui::ViewController> controller;
    std::shared_ptr<ViewRenderer> renderer;
  };

  GtkWindow* window_;
  GtkOverlay* stage_;
  ui::Size size_;
  std::vector<Layer> layers_;
  std::function<void()> left_;
  bool painted_ = false;  ///< the picture on the screen is what the views are
};

}  // namespace VorselKelp::desktop
