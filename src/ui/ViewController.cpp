#include "VorselKelp/ui/ViewController.h"

#include <utility>

namespace VorselKelp::ui {

const std::shared_ptr<View>& ViewController::view() {
  if (view_ || loading_) return view_;
  loading_ = true;
  loadView();
  loading_ = false;
  if (view_) viewDidLoad();
  return view_;
}

void ViewController::loadView() {
  setView(std::make_shared<View>());
}

bool ViewController::link(const std::shared_ptr<ViewController>& controller) {
  if (!controller || presented_ || controller.get() == this || controller->presentingViewController()) {
    return false;
  }
  for (auto below = presentingViewController(); below; below = below->presentingViewController()) {
    if (below == controller) return false;
  }
  presented_ = controller;
  controller->presenting_ = weak_from_this();
  return true;
}

bool ViewController::unlink() {
  const auto presenting = presenting_.lock();
  if (!presenting) return false;
  if (presented_) presented_->unlink();
  presenting_.reset();
  presenting->presented_ = nullptr;
  return true;
}

}  // namespace VorselKelp::ui
