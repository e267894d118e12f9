#include <utility>

#include "VorselKelp/ui/Button.h"
#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/Label.h"
#include "VorselKelp/ui/NavigationBar.h"
#include "VorselKelp/ui/ViewVisitor.h"
#include "VorselKelp/ui/WebView.h"

namespace VorselKelp::ui {

void Label::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void TextView::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void ImageView::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void ActivityIndicator::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void WebView::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void Button::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void Button::onTouchUpInside(std::function<void()> action) {
  actions_.push_back(std::move(action));
  propertyChanged();
}

bool Button::hasTapTargets() const {
  return !actions_.empty() || View::hasTapTargets();
}

void Button::handleTap() {
  const auto actions = actions_;
  for (const auto& action : actions) action();
  View::handleTap();
}

void NavigationBar::accept(ViewVisitor& visitor) {
  visitor.visit(*this);
}

void NavigationBar::setLeftButton(BarButton button) {
  leftButton_ = std::move(button);
  propertyChanged();
}

void NavigationBar::tapLeftButton() {
  if (!leftButton_ || !leftButton_->action) return;
  const auto action = leftButton_->action;
  action();
}

void NavigationBar::setRightView(std::shared_ptr<View> view) {
  if (rightView_) rightView_->removeFromSuperview();
  rightView_ = std::move(view);
  if (!rightView_) return;
  constexpr double room = 8;
  rightView_->translatesAutoresizingMaskIntoConstraints = false;
  addSubview(rightView_);
  activate({equal(rightView_->trailing(), trailing(), -room), equal(rightView_->centerY(), centerY())});
}

}  // namespace VorselKelp::ui
