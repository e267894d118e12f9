#pragma once

#include <gtk/gtk.h>

namespace VorselKelp::gtk {

/// What a tree widget asks of the node that it belongs to. Main thread.
class WidgetNode {
 public:
  struct Extent {
    int minimum = 0;
    int natural = 0;
  };

  virtual ~WidgetNode() = default;
  /// The room that the node's own content takes, in pixels; `forSize` is the other direction's, -1 for any.
  virtual Extent measure(GtkOrientation orientation, int forSize) = 0;
  /// Draws what lies below the children.
  virtual void paint(GtkSnapshot* snapshot, double width, double height) = 0;
  [[nodiscard]] virtual bool takesTouches() const = 0;
  /// The widget has this size now. Not told once it has a layout manager.
  virtual void placed(double width, double height) = 0;
};

/// A widget without a look of its own. It asks its node, which must outlive it or be taken from it first. A
/// layout manager, once it is given one, places the children and answers for the size in place of the node.
/// `role` is what it is for readers of the screen. Floating reference.
GtkWidget* newTreeWidget(WidgetNode* node, GtkAccessibleRole role);
/// The widget asks nobody any more.
void forgetNode(GtkWidget* widget);

}  // namespace VorselKelp::gtk
