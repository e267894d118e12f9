#include "views/ViewNode.h"

namespace VorselKelp::gtk {

ViewNode::ViewNode(ui::View& view, GtkAccessibleRole role)
    : view_(view),
      widget_(newTreeWidget(this, role)),
      click_(gtk_gesture_click_new()),
      keys_(gtk_event_controller_key_new()) {
  g_object_ref_sink(widget_);
  g_signal_connect(click_, "released", G_CALLBACK(&ViewNode::released), this);
  gtk_widget_add_controller(widget_, GTK_EVENT_CONTROLLER(click_));
  g_signal_connect(keys_, "key-pressed", G_CALLBACK(&ViewNode::pressed), this);
  gtk_widget_add_controller(widget_, keys_);
}

ViewNode::~ViewNode() {
  g_signal_handlers_disconnect_by_data(click_, this);
  g_signal_handlers_disconnect_by_data(keys_, this);
  forgetNode(widget_);
  if (gtk_widget_get_parent(widget_) != nullptr) gtk_widget_unparent(widget_);
  g_object_unref(widget_);
}

void ViewNode::released(GtkGestureClick* gesture, int, double x, double y, gpointer self) {
  auto& node = *static_cast<ViewNode*>(self);
  if (!node.view_.hearsTaps() || x < 0 || y < 0 || x >= gtk_widget_get_width(node.widget_) ||
      y >= gtk_widget_get_height(node.widget_)) {
    return;
  }
  gtk_gesture_set_state(GTK_GESTURE(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
  node.view_.tap();  // the node may be gone behind this
}

gboolean ViewNode::pressed(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer self) {
  auto& node = *static_cast<ViewNode*>(self);
  const bool activates = key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_space;
  if (!activates || !gtk_widget_has_focus(node.widget_) || !node.view_.hearsTaps()) return FALSE;
  node.view_.tap();  // the node may be gone behind this
  return TRUE;
}

void ViewNode::describe(const std::string& text) {
  const auto& own = view_.accessibilityLabel.get();
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget_), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 own.empty() ? text.c_str() : g_dgettext("vorselkelp", own.c_str()), -1);
}

void ViewNode::update() {
  if (!view_.accessibilityLabel.get().empty()) describe({});
  followTaps();
  gtk_widget_set_visible(widget_, !view_.hidden);
  gtk_widget_set_opacity(widget_, view_.alpha);
  gtk_widget_queue_draw(widget_);
}

void ViewNode::paint(GtkSnapshot* snapshot, double width, double height) {
  paintBox(snapshot, view_, width, height);
}

GtkConstraintLayout* ViewNode::constraintLayout() {
  if (gtk_widget_get_layout_manager(widget_) == nullptr) {
    gtk_widget_set_layout_manager(widget_, gtk_constraint_layout_new());
  }
  return GTK_CONSTRAINT_LAYOUT(gtk_widget_get_layout_manager(widget_));
}

void ViewNode::renewConstraintLayout() {
  gtk_widget_set_layout_manager(widget_, gtk_constraint_layout_new());
}

}  // namespace VorselKelp::gtk
