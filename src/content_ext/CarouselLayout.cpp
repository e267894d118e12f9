#include "content_ext/CarouselLayout.h"

namespace VorselKelp {
namespace {

using ui::Constraint;
using ui::equal;
using ui::fixed;

constexpr double side = 10;
constexpr double bottomGap = 10;
constexpr double arrowSize = 40;

/// The views from top to bottom, `gap` above each of them.
std::vector<Constraint> stacked(ui::View& outer, const std::vector<ui::View*>& views, double gap) {
  std::vector<Constraint> constraints;
  ui::Anchor above = outer.top();
  for (ui::View* view : views) {
    constraints.push_back(equal(view->top(), above, gap));
    constraints.push_back(equal(view->leading(), outer.leading(), side));
    constraints.push_back(equal(view->trailing(), outer.trailing(), -side));
    above = view->bottom();
  }
  constraints.push_back(equal(above, outer.bottom(), -bottomGap));
  return constraints;
}

void addArrow(std::vector<Constraint>& constraints, ui::View& arrow, ui::View& image) {
  constraints.push_back(equal(arrow.centerY(), image.centerY()));
  constraints.push_back(fixed(arrow.width(), arrowSize));
  constraints.push_back(fixed(arrow.height(), arrowSize));
}

}  // namespace

std::vector<Constraint> messageConstraints(VorselNotificationView& view, std::int64_t layoutCode) {
  ui::View* const title = view.titleLabel.get();
  ui::View* const body = view.subtitleLabel.get();
  ui::View* const image = view.imageView.get();
  switch (layoutCode) {
    case 0:
      return stacked(view, {title, body, image}, 5);
    case 1:
      return stacked(view, {title, image, body}, 10);
    case 2:
      return stacked(view, {image, title, body}, 5);
    default:
      return {};
  }
}

std::vector<Constraint> buttonConstraints(VorselNotificationView& view) {
  auto constraints = ui::pinnedEdges(view.conversionButton, view.shared_from_this());
  constraints.push_back(equal(view.leftButton->leading(), view.leading(), side));
  addArrow(constraints, *view.leftButton, *view.imageView);
  constraints.push_back(equal(view.rightButton->trailing(), view.trailing(), -side));
  addArrow(constraints, *view.rightButton, *view.imageView);
  return constraints;
}

}  // namespace VorselKelp
