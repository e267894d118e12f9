#include "VorselKelp/ui/Layout.h"

#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

std::vector<Constraint> pinnedEdges(const std::shared_ptr<View>& inner, const std::shared_ptr<View>& outer,
                                    Edges edges) {
  std::vector<Constraint> constraints;
  for (const auto edge : {Attribute::top, Attribute::leading, Attribute::bottom, Attribute::trailing}) {
    constraints.push_back(equal(inner->anchor(edge), outer->anchor(edge, edges)));
  }
  return constraints;
}

}  // namespace VorselKelp::ui
