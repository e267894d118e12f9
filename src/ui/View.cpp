#include "VorselKelp/ui/View.h"

#include <algorithm>
#include <utility>

#include "VorselKelp/ui/ViewVisitor.h"

namespace VorselKelp::ui {

View::~View() {
  for (const auto& view : subviews_) view->superview_ = nullptr;
}

void View::addSubview(std::shared_ptr<View> view) {
  if (!view || view->contains(*this)) return;
  view->removeFromSuperview();
  view->superview_ = this;
  subviews_.push_back(std::move(view));
  tell(&ViewObserver::structureChanged);
}

void View::removeFromSuperview() {
  if (superview_ == nullptr) return;
  const auto self = shared_from_this();
  auto& parent = *std::exchange(superview_, nullptr);
  std::erase(parent.subviews_, self);
  parent.tell(&ViewObserver::structureChanged);
}

bool View::contains(const View& view) const {
  for (const View* ancestor = &view; ancestor != nullptr; ancestor = ancestor->superview_) {
    if (ancestor == this) return true;
  }
  return false;
}

Anchor View::anchor(Attribute attribute, Edges edges) {
  return {weak_from_this(), attribute, edges};
}

void View::activate(std::vector<Constraint> constraints) {
  std::ranges::move(constraints, std::back_inserter(constraints_));
  tell(&ViewObserver::structureChanged);
}

void View::addTapRecognizer(std::function<void()> action) {
  recognizers_.push_back(std::move(action));
  tell(&ViewObserver::structureChanged);
}

bool View::hearsTaps() const {
  return userInteractionEnabled && !hidden && hasTapTargets();
}

void View::tap() {
  if (!hearsTaps()) return;
  const auto self = shared_from_this();  // what the tap leads to may take the view away
  handleTap();
}

void View::handleTap() {
  const auto actions = recognizers_;
  for (const auto& action : actions) action();
}

void View::setNeedsLayout() {
  tell(&ViewObserver::layoutNeeded);
}

void View::performLayout() {
  layoutSubviews();
  const auto views = subviews_;
  for (const auto& view : views) view->performLayout();
}

void View::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void View::propertyChanged() {
  tell(&ViewObserver::propertiesChanged);
}

void View::tell(void (ViewObserver::*event)(View&)) {
  for (const View* ancestor = this; ancestor != nullptr; ancestor = ancestor->superview_) {
    if (const auto observer = ancestor->observer_.lock()) return (*observer.*event)(*this);
  }
}

}  // namespace VorselKelp::ui
