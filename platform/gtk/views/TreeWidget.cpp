#include "views/TreeWidget.h"

#include <algorithm>

// GObject's own way of writing a class.
struct VorselTreeWidget {
  GtkWidget parent;
  VorselKelp::gtk::WidgetNode* node;
};
struct VorselTreeWidgetClass {
  GtkWidgetClass parent;
};

G_DEFINE_TYPE(VorselTreeWidget, vorsel_tree_widget, GTK_TYPE_WIDGET)

namespace {

VorselTreeWidget* self(GtkWidget* widget) {
  return reinterpret_cast<VorselTreeWidget*>(widget);
}

void measure(GtkWidget* widget, GtkOrientation orientation, int forSize, int* minimum, int* natural,
             int* minimumBaseline, int* naturalBaseline) {
  *minimum = *natural = 0;
  *minimumBaseline = *naturalBaseline = -1;
  if (self(widget)->node == nullptr) return;
  const auto own = self(widget)->node->measure(orientation, forSize);
  *minimum = own.minimum;
  *natural = std::max(own.natural, own.minimum);
}

void allocate(GtkWidget* widget, int width, int height, int) {
  if (auto* node = self(widget)->node) node->placed(width, height);
}

/// Around what the keyboard is at, once the user uses it.
void paintFocus(GtkWidget* widget, GtkSnapshot* snapshot) {
  constexpr GdkRGBA color{0.21F, 0.52F, 0.89F, 1};
  const GdkRGBA colors[] = {color, color, color, color};
  const float widths[] = {2, 2, 2, 2};
  GskRoundedRect outline;
  const auto bounds = GRAPHENE_RECT_INIT(0, 0, static_cast<float>(gtk_widget_get_width(widget)),
                                         static_cast<float>(gtk_widget_get_height(widget)));
  gsk_rounded_rect_init_from_rect(&outline, &bounds, 4);
  gtk_snapshot_append_border(snapshot, &outline, widths, colors);
}

void snapshot(GtkWidget* widget, GtkSnapshot* snapshot) {
  if (auto* node = self(widget)->node) {
    node->paint(snapshot, gtk_widget_get_width(widget), gtk_widget_get_height(widget));
  }
  for (auto* child = gtk_widget_get_first_child(widget); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    gtk_widget_snapshot_child(widget, child, snapshot);
  }
  if (gtk_widget_has_visible_focus(widget)) paintFocus(widget, snapshot);
}

gboolean contains(GtkWidget* widget, double x, double y) {
  const auto* node = self(widget)->node;
  return node != nullptr && node->takesTouches() && x >= 0 && y >= 0 && x < gtk_widget_get_width(widget) &&
         y < gtk_widget_get_height(widget);
}

void dispose(GObject* object) {
  auto* widget = GTK_WIDGET(object);
  self(widget)->node = nullptr;
  while (auto* child = gtk_widget_get_first_child(widget)) gtk_widget_unparent(child);
  G_OBJECT_CLASS(vorsel_tree_widget_parent_class)->dispose(object);
}

}  // namespace

static void vorsel_tree_widget_class_init(VorselTreeWidgetClass* type) {
  auto* widgetClass = GTK_WIDGET_CLASS(type);
  widgetClass->measure = measure;
  widgetClass->size_allocate = allocate;
  widgetClass->snapshot = snapshot;
  widgetClass->contains = contains;
  G_OBJECT_CLASS(type)->dispose = dispose;
}

static void vorsel_tree_widget_init(VorselTreeWidget*) {}

namespace VorselKelp::gtk {

GtkWidget* newTreeWidget(WidgetNode* node, GtkAccessibleRole role) {
  auto* widget = GTK_WIDGET(g_object_new(vorsel_tree_widget_get_type(), "accessible-role", role, nullptr));
  self(widget)->node = node;
  return widget;
}

void forgetNode(GtkWidget* widget) {
  self(widget)->node = nullptr;
}

}  // namespace VorselKelp::gtk
