#include "stage/ModalFrame.h"

#include <utility>

namespace VorselKelp::gtk {
namespace {

/// Marks a frame, and what a frame keeps from the keyboard.
constexpr const char* frameMark = "vorsel-modal-frame";
constexpr const char* heldMark = "vorsel-held";

bool marked(GtkWidget* widget, const char* mark) {
  return g_object_get_data(G_OBJECT(widget), mark) != nullptr;
}

void hold(GtkWidget* widget) {
  if (!gtk_widget_get_can_focus(widget)) return;
  gtk_widget_set_can_focus(widget, FALSE);
  g_object_set_data(G_OBJECT(widget), heldMark, widget);
}

void release(GtkWidget* widget) {
  if (!marked(widget, heldMark)) return;
  gtk_widget_set_can_focus(widget, TRUE);
  g_object_set_data(G_OBJECT(widget), heldMark, nullptr);
}

}  // namespace

void keepKeyboardOnTop(GtkOverlay* overlay) {
  bool covered = false;
  for (auto* child = gtk_widget_get_last_child(GTK_WIDGET(overlay)); child != nullptr;
       child = gtk_widget_get_prev_sibling(child)) {
    covered ? hold(child) : release(child);
    if (marked(child, frameMark)) covered = true;
  }
}

ModalFrame::ModalFrame(GtkOverlay* overlay, GtkWidget* content, std::function<bool()> escaped)
    : escaped_(std::move(escaped)),
      frame_(GTK_WIDGET(g_object_new(GTK_TYPE_BOX, "accessible-role", GTK_ACCESSIBLE_ROLE_DIALOG, "focusable",
                                     TRUE, nullptr))),
      content_(content),
      keys_(gtk_event_controller_key_new()) {
  g_object_ref_sink(frame_);
  gtk_accessible_update_property(GTK_ACCESSIBLE(frame_), GTK_ACCESSIBLE_PROPERTY_MODAL, TRUE, -1);
  g_object_set_data(G_OBJECT(frame_), frameMark, frame_);
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(&ModalFrame::onKey), this);
  gtk_widget_add_controller(frame_, keys_);
  gtk_box_append(GTK_BOX(frame_), content_);
  if (auto* root = gtk_widget_get_root(GTK_WIDGET(overlay))) before_ = gtk_root_get_focus(root);
  if (before_ != nullptr) g_object_add_weak_pointer(G_OBJECT(before_), reinterpret_cast<gpointer*>(&before_));
  gtk_overlay_add_overlay(overlay, frame_);
  keepKeyboardOnTop(overlay);
  if (!gtk_widget_child_focus(content_, GTK_DIR_TAB_FORWARD)) gtk_widget_grab_focus(frame_);
}

ModalFrame::~ModalFrame() {
  g_signal_handlers_disconnect_by_data(keys_, this);
  auto* under = overlay();
  gtk_box_remove(GTK_BOX(frame_), content_);
  if (under != nullptr) {
    gtk_overlay_remove_overlay(under, frame_);
    keepKeyboardOnTop(under);
  }
  g_object_unref(frame_);
  if (before_ == nullptr) return;
  g_object_remove_weak_pointer(G_OBJECT(before_), reinterpret_cast<gpointer*>(&before_));
  if (gtk_widget_get_root(before_) != nullptr) gtk_widget_grab_focus(before_);
}

GtkOverlay* ModalFrame::overlay() const {
  auto* parent = gtk_widget_get_parent(frame_);
  return parent != nullptr ? GTK_OVERLAY(parent) : nullptr;
}

gboolean ModalFrame::onKey(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer self) {
  if (key != GDK_KEY_Escape) return FALSE;
  const auto escaped = static_cast<ModalFrame*>(self)->escaped_;  // the frame may go with it
  return escaped() ? TRUE : FALSE;
}

}  // namespace VorselKelp::gtk
