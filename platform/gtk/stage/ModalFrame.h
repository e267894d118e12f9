#pragma once

#include <gtk/gtk.h>

#include <functional>

namespace VorselKelp::gtk {

/// What holds a screen over a window: while it is there, pointer and keyboard reach nothing below it; the
/// Escape key is told; with it the keyboard goes back to where it was. Main thread.
class ModalFrame {
 public:
  /// On top of the overlay. `escaped` runs when the user presses Escape, and answers whether that was for it.
  ModalFrame(GtkOverlay* overlay, GtkWidget* content, std::function<bool()> escaped);
  ModalFrame(const ModalFrame&) = delete;
  ModalFrame& operator=(const ModalFrame&) = delete;
  ~ModalFrame();

  /// Null once its window has been closed.
  [[nodiscard]] GtkOverlay* overlay() const;

 private:
  static gboolean onKey(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer self);

  const std::function<bool()> escaped_;
  GtkWidget* frame_;
  GtkWidget* content_;
  GtkEventController* keys_;     ///< the frame's
  GtkWidget* before_ = nullptr;  ///< what had the keyboard; null when it has gone
};

/// Only what lies on top of the overlay can have the keyboard.
void keepKeyboardOnTop(GtkOverlay* overlay);

}  // namespace VorselKelp::gtk
