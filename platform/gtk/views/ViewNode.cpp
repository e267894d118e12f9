#include "views/ViewNode.h"

namespace VorselKelp::gtk {

ViewNode::ViewNode(ui::View& view)
    : view_(view), widget_(newTreeWidget(this)), click_(gtk_gesture_click_new()) {
  g_object_ref_sink(widget_);
  g_signal_connect(click_, "released", G_CALLBACK(&ViewNode::released), this);
  gtk_widget_add_controller(widget_, GTK_EVENT_CONTROLLER(click_));
}

ViewNode::~ViewNode() {
  g_signal_handlers_disconnect_by_data(click_, this);
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

void ViewNode::update() {
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
