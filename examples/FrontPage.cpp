#include "FrontPage.h"

#include "VorselKelp/ui/Label.h"

namespace news {

using namespace VorselKelp;

namespace {

struct Line {
  const char* text;
  ui::Font font;
  double gapAbove;
};

constexpr Line lines[]{
    {"The Daily Example", {28, true}, 48},
    {"Storm warning for the coast", {17, true}, 32},
    {"Ferries stay in port until tomorrow morning.", {13, false}, 4},
    {"Harbour museum opens its new wing", {17, true}, 24},
    {"Three floors of sails, knots and maps.", {13, false}, 4},
    {"Council votes on the tram extension", {17, true}, 24},
    {"Two stops more, and trees along the way.", {13, false}, 4},
};

}  // namespace

void FrontPage::viewDidLoad() {
  constexpr double margin = 20;
  view()->backgroundColor = ui::Color{0.98, 0.96, 0.92, 1};
  auto above = view()->top();
  for (const auto& line : lines) {
    auto label = std::make_shared<ui::Label>();
    label->translatesAutoresizingMaskIntoConstraints = false;
    label->text = line.text;
    label->font = line.font;
    view()->addSubview(label);
    view()->activate({equal(label->top(), above, line.gapAbove),
                      equal(label->leading(), view()->leading(), margin),
                      equal(label->trailing(), view()->trailing(), -margin)});
    above = label->bottom();
  }
}

}  // namespace news
