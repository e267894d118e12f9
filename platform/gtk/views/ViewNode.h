#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/ui/ViewVisitor.h"
#include "views/Painter.h"
#include "views/TreeWidget.h"

namespace VorselKelp::gtk {

/// One view on the screen: a widget that paints it and sends its taps to it. The node must not outlive its
/// view by more than it takes to destroy it.
class ViewNode : public WidgetNode {
 public:
  explicit ViewNode(ui::View& view, GtkAccessibleRole role = GTK_ACCESSIBLE_ROLE_GROUP);
  ViewNode(const ViewNode&) = delete;
  ViewNode& operator=(const ViewNode&) = delete;
  ~ViewNode() override;

  [[nodiscard]] GtkWidget* widget() const { return widget_; }
  [[nodiscard]] ui::View& view() const { return view_; }

  /// Shows the view's properties as they are now.
  virtual void update();
  /// The keyboard reaches what can be tapped.
  void followTaps() { gtk_widget_set_focusable(widget_, view_.hearsTaps()); }
  /// What the view takes of its own accord, in pixels, leaving the rest to others; absent where it takes what
  /// it is given.
  struct OwnSize {
    std::optional<int> width;
    std::optional<int> height;
    bool widthYields = false;  ///< to whatever else says how wide it is
    friend bool operator==(const OwnSize&, const OwnSize&) = default;
  };
  virtual OwnSize ownSize() { return {}; }

  /// What places the widget's children; made at the first call. From then on the children's constraints alone
  /// say how much room the widget needs. Null for a view whose content takes all of its area.
  virtual GtkConstraintLayout* constraintLayout();
  /// Puts an empty one in its place.
  void renewConstraintLayout();

  Extent measure(GtkOrientation, int) override { return {}; }
  void paint(GtkSnapshot* snapshot, double width, double height) override;
  [[nodiscard]] bool takesTouches() const override { return view_.hearsTaps(); }
  void placed(double, double) override {}

 protected:
  /// For readers of the screen: the view's own name, translated, else this.
  void describe(const std::string& text);

 private:
  static gboolean pressed(GtkEventControllerKey*, guint key, guint, GdkModifierType, gpointer node);
  static void released(GtkGestureClick* gesture, int presses, double x, double y, gpointer node);

  ui::View& view_;
  GtkWidget* widget_;
  GtkGesture* click_;         ///< the widget's
  GtkEventController* keys_;  ///< the widget's
};

std::unique_ptr<ViewNode> makeViewNode(ui::View& view);

}  // namespace VorselKelp::gtk
