#pragma once

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpGtk/Stage.h"
#include "VorselKelpGtk/ViewWidget.h"

namespace VorselKelp::gtk {

/// A real window on the display that the test program runs on, with hands and eyes.
class TestScreen {
 public:
  static constexpr double width = 390;
  static constexpr double height = 312;

  TestScreen();
  TestScreen(const TestScreen&) = delete;
  TestScreen& operator=(const TestScreen&) = delete;
  ~TestScreen();

  /// Opens the window with this view in it and waits until it has been drawn.
  void show(const std::shared_ptr<ui::View>& view);
  void show(const std::shared_ptr<ui::ViewController>& controller);
  /// A widget of the application's own in the place of views.
  void show(GtkWidget* widget);
  /// Lets the toolkit work until `done` answers true; fails after 20 seconds.
  static void waitUntil(const std::function<bool()>& done);
  /// Lets the toolkit draw what changed.
  void settle();
  /// Lets the window be painted this often.
  void passFrames(int count);
  /// Real keys, by their X names: "Tab".
  static void press(const std::vector<std::string>& keys);
  /// A real click of the mouse at a point of the window.
  static void click(double x, double y);
  void click(ui::View& view);
  /// The colour of a pixel of the window's picture, as "#rrggbb".
  std::string pixel(double x, double y);
  /// Does at once what waits for the next picture.
  void flush();
  /// As the application itself would; the stage stays.
  void closeWindow();
  ui::Rect boundsOf(ui::View& view) const;
  void expectPlaced(ui::View& view, ui::Rect place) const;

  /// Over the window.
  std::shared_ptr<Stage> stage;
  std::vector<bool> screens;  ///< that have appeared or gone, as the stage tells
  GtkWindow* window = nullptr;

 private:
  void open();
  GtkOverlay* overlay_ = nullptr;
  std::shared_ptr<ui::ViewController> shown_;
  std::shared_ptr<ViewWidget> root_;
};

class ScreenTest : public testing::Test, protected TestScreen {};

}  // namespace VorselKelp::gtk
