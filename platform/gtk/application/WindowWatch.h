#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <set>

#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::gtk {

/// Tells a running application what its windows do: each that is mapped is a screen, the active one makes the
/// application active, the last one to go sends it to the background, where the patience with its background
/// tasks ends when nothing is under way any more, after half a minute at the latest. Main thread, whose time
/// is the main queue's.
class WindowWatch {
 public:
  /// `idle` tells whether nothing is under way. Application and running application must outlive it.
  WindowWatch(GtkApplication* application, system::RunningApplication& running,
              std::shared_ptr<platform::MainQueue> mainQueue, std::function<bool()> idle);
  WindowWatch(const WindowWatch&) = delete;
  WindowWatch& operator=(const WindowWatch&) = delete;
  ~WindowWatch();

 private:
  static void onAdded(GtkApplication*, GtkWindow* window, WindowWatch* self);
  static void onRemoved(GtkApplication*, GtkWindow* window, WindowWatch* self);
  static void onMapped(GtkWidget* window, WindowWatch* self);
  static void onUnmapped(GtkWidget* window, WindowWatch* self);
  static void onActive(GtkWindow*, GParamSpec*, WindowWatch* self);
  void watch(GtkWindow* window);
  void wait(double patience);

  GtkApplication* const application_;
  system::RunningApplication& running_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::function<bool()> idle_;
  std::set<GtkWindow*> windows_;
  std::set<GtkWidget*> mapped_;
  bool active_ = false;
  std::shared_ptr<void> patience_;  ///< set while it lasts
};

}  // namespace VorselKelp::gtk
