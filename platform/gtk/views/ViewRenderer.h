#pragma once

#include <functional>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "VorselKelp/ui/View.h"
#include "views/ViewNode.h"

namespace VorselKelp::gtk {

/// Shows one tree of views as widgets, and keeps them as the views are: properties at once, structure and
/// layout before the next picture. Constraints are solved by the toolkit; the frames that come out are set in
/// the views, followed by a layout pass. Main thread. Make it with std::make_shared.
class ViewRenderer final : public ui::ViewObserver, public std::enable_shared_from_this<ViewRenderer> {
 public:
  /// `changed` runs whenever the picture is not what the views are any more.
  ViewRenderer(std::shared_ptr<ui::View> root, std::function<void()> changed);
  ~ViewRenderer() override;

  /// Builds the widgets; once, right after it was made.
  void start();
  /// Hears of no change any more: somebody else is about to show the tree.
  void stop();
  /// The root's widget, the renderer's for as long as it lives.
  [[nodiscard]] GtkWidget* widget() const { return nodes_.at(root_.get())->widget(); }
  [[nodiscard]] bool pending() const { return layoutPending_ || !restructured_.empty(); }
  /// Brings widgets and views into line: to be called after each layout of the window. What changes then is
  /// laid out in the same frame.
  void flush();
  /// Shows everything again: the user wants another look.
  void restyle();
  /// Where a view is now, in the root's coordinates; an empty rectangle for one that is not shown.
  [[nodiscard]] ui::Rect boundsOf(ui::View& view) const;

  void propertiesChanged(ui::View& view) override;
  void structureChanged(ui::View& view) override;
  void layoutNeeded(ui::View& view) override;

 private:
  ViewNode& nodeOf(ui::View& view);
  void build(ui::View& view);
  void constrain(ui::View& view);
  void release(ui::View& view);
  [[nodiscard]] ViewNode::OwnSize ownSizeOf(const ui::View& holder, ui::View& child);
  void add(ui::View& holder, GtkConstraint* constraint);
  void addConstraint(ui::View& holder, const ui::Constraint& constraint);
  void fixFrame(ui::View& holder, ui::View& child);
  GtkWidget* targetOf(ui::View& holder, const ui::Anchor& anchor);
  void dropGoneNodes();
  void takeFrame(ui::View& view, const ui::Rect& frame);
  void takeFrames(ui::View& view);
  void schedule();

  const std::shared_ptr<ui::View> root_;
  const std::function<void()> changed_;
  std::unordered_map<ui::View*, std::unique_ptr<ViewNode>> nodes_;
  std::unordered_set<ui::View*> constrained_;                  ///< whose widgets' layouts hold constraints
  std::unordered_map<ui::View*, ViewNode::OwnSize> ownSizes_;  ///< as the constraints have them
  std::unordered_set<ui::View*> restructured_;
  bool layoutPending_ = true;
  bool settingFrames_ = false;
  bool stopped_ = false;
  guint idle_ = 0;
};

}  // namespace VorselKelp::gtk
