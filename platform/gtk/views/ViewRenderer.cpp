#include "views/ViewRenderer.h"

#include <algorithm>
#include <set>
#include <utility>

namespace VorselKelp::gtk {
namespace {

GtkConstraintAttribute toolkitAttribute(ui::Attribute attribute) {
  switch (attribute) {
    case ui::Attribute::leading:
      return GTK_CONSTRAINT_ATTRIBUTE_START;
    case ui::Attribute::trailing:
      return GTK_CONSTRAINT_ATTRIBUTE_END;
    case ui::Attribute::top:
      return GTK_CONSTRAINT_ATTRIBUTE_TOP;
    case ui::Attribute::bottom:
      return GTK_CONSTRAINT_ATTRIBUTE_BOTTOM;
    case ui::Attribute::width:
      return GTK_CONSTRAINT_ATTRIBUTE_WIDTH;
    case ui::Attribute::height:
      return GTK_CONSTRAINT_ATTRIBUTE_HEIGHT;
    case ui::Attribute::centerX:
      return GTK_CONSTRAINT_ATTRIBUTE_CENTER_X;
    case ui::Attribute::centerY:
      break;
  }
  return GTK_CONSTRAINT_ATTRIBUTE_CENTER_Y;
}

/// Whether the holder's constraints say how wide the child is.
bool isWidthGiven(const ui::View& holder, const ui::View& child) {
  if (child.translatesAutoresizingMaskIntoConstraints) return true;
  std::set<ui::Attribute> sides;
  const auto note = [&](const ui::Anchor& anchor) {
    if (anchor.view.lock().get() == &child) sides.insert(anchor.attribute);
  };
  for (const auto& constraint : holder.constraints()) {
    note(constraint.first);
    if (!constraint.againstConstant) note(constraint.second);
  }
  const auto across = sides.count(ui::Attribute::leading) + sides.count(ui::Attribute::trailing) +
                      sides.count(ui::Attribute::centerX);
  return across >= 2 || sides.contains(ui::Attribute::width);
}

bool fills(const ui::View& holder, const ui::View& child) {
  const auto& outer = holder.frame.get().size;
  const auto& inner = child.frame.get();
  return inner.origin == ui::Point{} &&
         (inner.size == outer || inner.size == ui::Size{} || outer == ui::Size{});
}

}  // namespace

ViewRenderer::ViewRenderer(std::shared_ptr<ui::View> root, std::function<void()> changed)
    : root_(std::move(root)), changed_(std::move(changed)) {}

ViewRenderer::~ViewRenderer() {
  stop();
  if (idle_ != 0) g_source_remove(idle_);
}

void ViewRenderer::start() {
  root_->setObserver(weak_from_this());
  nodeOf(*root_);
  build(*root_);
}

void ViewRenderer::stop() {
  if (!std::exchange(stopped_, true)) root_->setObserver({});
}

ViewNode& ViewRenderer::nodeOf(ui::View& view) {
  auto& node = nodes_[&view];
  if (!node) node = makeViewNode(view);
  return *node;
}

/// Brings the children of the view's widget into the order of its subviews, and makes those that are missing.
void ViewRenderer::build(ui::View& view) {
  auto* parent = nodeOf(view).widget();
  GtkWidget* last = nullptr;
  for (const auto& child : view.subviews()) {
    const bool known = nodes_.contains(child.get());
    auto* widget = nodeOf(*child).widget();
    if (gtk_widget_get_parent(widget) != nullptr && gtk_widget_get_parent(widget) != parent) {
      gtk_widget_unparent(widget);
    }
    if (last == nullptr) {
      gtk_widget_insert_before(widget, parent, nullptr);
    } else {
      gtk_widget_insert_after(widget, parent, last);
    }
    last = widget;
    if (!known) build(*child);
  }
  constrain(view);
}

/// All constraints go at once, with the layout that holds them. When single ones are taken away, the
/// toolkit's solver no longer knows the strong ones that stay from the weak.
void ViewRenderer::release(ui::View& view) {
  if (constrained_.erase(&view) > 0) nodeOf(view).renewConstraintLayout();
}

void ViewRenderer::constrain(ui::View& view) {
  release(view);
  if (view.subviews().empty() || nodeOf(view).constraintLayout() == nullptr) return;
  constrained_.insert(&view);
  for (const auto& constraint : view.constraints()) addConstraint(view, constraint);
  for (const auto& child : view.subviews()) {
    if (child->translatesAutoresizingMaskIntoConstraints) fixFrame(view, *child);
    const auto own = ownSizeOf(view, *child);
    const auto take = [&](GtkConstraintAttribute attribute, std::optional<int> length) {
      if (!length) return;
      add(view, gtk_constraint_new_constant(nodeOf(*child).widget(), attribute, GTK_CONSTRAINT_RELATION_EQ,
                                            *length, GTK_CONSTRAINT_STRENGTH_STRONG));
    };
    take(GTK_CONSTRAINT_ATTRIBUTE_WIDTH, own.width);
    take(GTK_CONSTRAINT_ATTRIBUTE_HEIGHT, own.height);
    ownSizes_[child.get()] = own;
  }
}

ViewNode::OwnSize ViewRenderer::ownSizeOf(const ui::View& holder, ui::View& child) {
  auto own = nodeOf(child).ownSize();
  if (own.widthYields && isWidthGiven(holder, child)) own.width.reset();
  return own;
}

void ViewRenderer::add(ui::View& holder, GtkConstraint* constraint) {
  gtk_constraint_layout_add_constraint(nodeOf(holder).constraintLayout(), constraint);
}

/// Null for the holder itself, in the toolkit's way.
GtkWidget* ViewRenderer::targetOf(ui::View& holder, const ui::Anchor& anchor) {
  const auto view = anchor.view.lock();
  if (!view || view.get() == &holder) return nullptr;
  return nodeOf(*view).widget();
}

void ViewRenderer::addConstraint(ui::View& holder, const ui::Constraint& constraint) {
  const auto inReach = [&](const ui::Anchor& anchor) {
    const auto view = anchor.view.lock();
    return view && (view.get() == &holder || view->superview() == &holder);
  };
  if (!inReach(constraint.first) || (!constraint.againstConstant && !inReach(constraint.second))) return;
  auto* target = targetOf(holder, constraint.first);
  const auto attribute = toolkitAttribute(constraint.first.attribute);
  if (constraint.againstConstant) {
    add(holder, gtk_constraint_new_constant(target, attribute, GTK_CONSTRAINT_RELATION_EQ,
                                            constraint.constant, GTK_CONSTRAINT_STRENGTH_REQUIRED));
    return;
  }
  // A window of the desktop has no bars of the system's over it: its safe area is all of it.
  add(holder,
      gtk_constraint_new(target, attribute, GTK_CONSTRAINT_RELATION_EQ, targetOf(holder, constraint.second),
                         toolkitAttribute(constraint.second.attribute), constraint.multiplier,
                         constraint.constant, GTK_CONSTRAINT_STRENGTH_REQUIRED));
}

/// A view without constraints of its own: it fills what it filled when it was put there, or stays as it is.
void ViewRenderer::fixFrame(ui::View& holder, ui::View& child) {
  auto* widget = nodeOf(child).widget();
  const auto edge = [&](GtkConstraintAttribute attribute, double constant) {
    add(holder, gtk_constraint_new(widget, attribute, GTK_CONSTRAINT_RELATION_EQ, nullptr, attribute, 1,
                                   constant, GTK_CONSTRAINT_STRENGTH_REQUIRED));
  };
  const auto length = [&](GtkConstraintAttribute attribute, double constant) {
    add(holder, gtk_constraint_new_constant(widget, attribute, GTK_CONSTRAINT_RELATION_EQ, constant,
                                            GTK_CONSTRAINT_STRENGTH_REQUIRED));
  };
  const auto& frame = child.frame.get();
  edge(GTK_CONSTRAINT_ATTRIBUTE_START, frame.origin.x);
  edge(GTK_CONSTRAINT_ATTRIBUTE_TOP, frame.origin.y);
  if (fills(holder, child)) {
    edge(GTK_CONSTRAINT_ATTRIBUTE_END, 0);
    edge(GTK_CONSTRAINT_ATTRIBUTE_BOTTOM, 0);
  } else {
    length(GTK_CONSTRAINT_ATTRIBUTE_WIDTH, frame.size.width);
    length(GTK_CONSTRAINT_ATTRIBUTE_HEIGHT, frame.size.height);
  }
}

void ViewRenderer::dropGoneNodes() {
  std::unordered_set<const ui::View*> there;
  const auto collect = [&](const auto& self, const ui::View& view) -> void {
    there.insert(&view);
    for (const auto& child : view.subviews()) self(self, *child);
  };
  collect(collect, *root_);
  std::erase_if(ownSizes_, [&](const auto& entry) { return !there.contains(entry.first); });
  std::erase_if(constrained_, [&](const auto* view) { return !there.contains(view); });
  std::erase_if(restructured_, [&](const auto* view) { return !there.contains(view); });
  std::erase_if(nodes_, [&](const auto& entry) { return !there.contains(entry.first); });
}

void ViewRenderer::takeFrame(ui::View& view, const ui::Rect& frame) {
  if (view.frame.get() == frame) return;
  settingFrames_ = true;
  view.frame = frame;
  settingFrames_ = false;
  layoutPending_ = true;
}

void ViewRenderer::takeFrames(ui::View& view) {
  for (const auto& child : view.subviews()) {
    const auto node = nodes_.find(child.get());
    if (node == nodes_.end()) continue;
    graphene_rect_t bounds;
    // A widget that was not placed yet has no size; its view keeps the frame that it was given.
    auto* widget = node->second->widget();
    const bool placed = gtk_widget_get_width(widget) > 0 || gtk_widget_get_height(widget) > 0;
    if (placed && gtk_widget_compute_bounds(widget, nodes_.at(&view)->widget(), &bounds)) {
      takeFrame(*child, {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}});
    }
    takeFrames(*child);
  }
}

void ViewRenderer::flush() {
  if (!restructured_.empty()) {
    const auto changed = std::exchange(restructured_, {});
    for (auto* view : changed) {
      if (nodes_.contains(view)) build(*view);
    }
  }
  auto* rootWidget = widget();
  const ui::Size size{static_cast<double>(gtk_widget_get_width(rootWidget)),
                      static_cast<double>(gtk_widget_get_height(rootWidget))};
  if (size == ui::Size{}) {
    if (root_->hidden) layoutPending_ = false;  // laid out when it is shown
    return;
  }
  takeFrame(*root_, {root_->frame.get().origin, size});
  takeFrames(*root_);
  if (std::exchange(layoutPending_, false)) root_->performLayout();
  for (const auto& [view, node] : nodes_) node->followTaps();
}

void ViewRenderer::restyle() {
  std::vector<std::weak_ptr<ui::View>> views;
  for (const auto& [view, node] : nodes_) views.push_back(view->weak_from_this());
  for (const auto& weak : views) {
    if (const auto view = weak.lock()) propertiesChanged(*view);
  }
}

void ViewRenderer::schedule() {
  changed_();
  if (idle_ != 0) return;
  // Before the toolkit's own layout and drawing.
  idle_ = g_idle_add_full(
      G_PRIORITY_HIGH_IDLE,
      [](gpointer self) -> gboolean {
        auto& renderer = *static_cast<ViewRenderer*>(self);
        renderer.idle_ = 0;
        const auto keep = renderer.shared_from_this();  // a layout pass may end the screen that is shown
        renderer.flush();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
}

ui::Rect ViewRenderer::boundsOf(ui::View& view) const {
  const auto node = nodes_.find(&view);
  graphene_rect_t bounds;
  if (node == nodes_.end() || !gtk_widget_compute_bounds(node->second->widget(), widget(), &bounds)) {
    return {};
  }
  return {{bounds.origin.x, bounds.origin.y}, {bounds.size.width, bounds.size.height}};
}

void ViewRenderer::propertiesChanged(ui::View& view) {
  if (settingFrames_) return;
  const auto node = nodes_.find(&view);
  if (node == nodes_.end()) return;
  node->second->update();
  changed_();
  const auto known = ownSizes_.find(&view);
  auto* holder = view.superview();
  if (known != ownSizes_.end() && holder != nullptr && ownSizeOf(*holder, view) != known->second)
    structureChanged(*holder);
}

void ViewRenderer::structureChanged(ui::View& view) {
  // What went takes its widget along at once: the view itself may be gone before the next picture.
  if (nodes_.contains(&view)) release(view);
  dropGoneNodes();
  restructured_.insert(&view);
  layoutPending_ = true;
  schedule();
}

void ViewRenderer::layoutNeeded(ui::View&) {
  layoutPending_ = true;
  schedule();
}

}  // namespace VorselKelp::gtk
