#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <set>

#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::gtk {

/// Tells a running application what its windows do: each that is mapped is a screen, the active one makes the
/// application active, the last one to go sends it to the background, where the patience with its background
/// tasks ends after half a minute. Main thread.
class WindowWatch {
 public:
  /// Both must outlive it.
  WindowWatch(GtkApplication* application, system::RunningApplication& running);
  WindowWatch(const WindowWatch&) = delete;
  WindowWatch& operator=(const WindowWatch&) = delete;
  ~WindowWatch();

 private:
  static void onAdded(GtkApplication*, GtkWindow* window, WindowWatch* self);
  static void onRemoved(GtkApplication*, GtkWindow* window, WindowWatch* self);
  static void onMapped(GtkWidget* window, WindowWatch* self);
  static void onUnmapped(GtkWidget* window, WindowWatch* self);
  static void onActive(GtkWindow*, GParamSpec*, WindowWatch* self);
  static gboolean onPatienceOver(gpointer self);
  void watch(GtkWindow* window);

  GtkApplication* const application_;
  system::RunningApplication& running_;
  std::set<GtkWindow*> windows_;
  std::set<GtkWidget*> mapped_;
  bool active_ = false;
  guint patience_ = 0;  ///< a timer while no window is mapped
};

}  // namespace VorselKelp::gtk
