#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "VorselKelp/Export.h"

namespace VorselKelp::ui {

class View;

enum class Attribute { leading, trailing, top, bottom, width, height, centerX, centerY };

/// Which of a view's rectangles an anchor is on: its own, or the part of it that no bar of the system covers.
enum class Edges { view, safeArea };

/// A line or a length of a view.
struct Anchor {
  std::weak_ptr<View> view;
  Attribute attribute = Attribute::leading;
  Edges edges = Edges::view;
};

/// first = multiplier × second + constant. Without a second anchor the constant alone (points) holds, and the
/// multiplier means nothing. A constraint with a view that has gone holds nothing.
struct Constraint {
  Anchor first;
  Anchor second;
  double multiplier = 1;
  double constant = 0;
  bool againstConstant = false;
};

/// `first` = `second` + `constant`.
inline Constraint equal(Anchor first, Anchor second, double constant = 0) {
  return {std::move(first), std::move(second), 1, constant, false};
}
/// `first` = `multiplier` × `second`.
inline Constraint proportional(Anchor first, Anchor second, double multiplier) {
  return {std::move(first), std::move(second), multiplier, 0, false};
}
inline Constraint fixed(Anchor first, double constant) {
  return {std::move(first), {}, 1, constant, true};
}

/// The four edges of `inner` on those of `outer`.
VORSELKELP_API std::vector<Constraint> pinnedEdges(const std::shared_ptr<View>& inner,
                                                   const std::shared_ptr<View>& outer,
                                                   Edges edges = Edges::view);

}  // namespace VorselKelp::ui
