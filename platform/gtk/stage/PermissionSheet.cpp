#include "stage/PermissionSheet.h"

#include <utility>

#include "VorselKelp/ui/Label.h"

namespace VorselKelp::gtk {
namespace {

constexpr double cardWidth = 290;
constexpr double cardHeight = 150;
constexpr double buttonHeight = 44;

template <class Kind>
std::shared_ptr<Kind> add(ui::View& parent) {
  auto view = std::make_shared<Kind>();
  view->translatesAutoresizingMaskIntoConstraints = false;
  parent.addSubview(view);
  return view;
}

}  // namespace

void PermissionSheet::viewDidLoad() {
  view()->backgroundColor = ui::Color{0, 0, 0, 0.35};
  const auto card = add<ui::View>(*view());
  card->backgroundColor = look_.dark ? ui::Color{0.2, 0.2, 0.2, 1} : ui::Color::white();
  card->cornerRadius = 14;
  view()->activate({equal(card->centerX(), view()->centerX()), equal(card->centerY(), view()->centerY()),
                    fixed(card->width(), cardWidth * look_.textScale),
                    fixed(card->height(), cardHeight * look_.textScale)});
  addTexts(*card);
  addButtons(*card);
}

void PermissionSheet::addTexts(ui::View& card) {
  const auto line = [&](const std::string& text, ui::Font font, const ui::Anchor& above, double gap) {
    const auto label = add<ui::Label>(card);
    label->text = text;
    label->font = font;
    label->textColor = look_.dark ? ui::Color::white() : ui::Color::black();
    label->textAlignment = ui::TextAlignment::center;
    card.activate({equal(label->top(), above, gap * look_.textScale),
                   equal(label->leading(), card.leading(), 12),
                   equal(label->trailing(), card.trailing(), -12)});
    return label->bottom();
  };
  const auto name = line("\"" + application_ + "\"", {15, true}, card.top(), 18);
  const auto question = line("would like to send you notifications.", {14, false}, name, 6);
  line("With alerts, sounds and badges.", {11, false}, question, 8);
}

void PermissionSheet::addButtons(ui::View& card) {
  deny_ = makeButton("Don't Allow", false);
  allow_ = makeButton("Allow", true);
  for (const auto& button : {deny_, allow_}) {
    card.addSubview(button);
    card.activate({equal(button->bottom(), card.bottom()),
                   fixed(button->height(), buttonHeight * look_.textScale),
                   fixed(button->width(), cardWidth / 2 * look_.textScale)});
  }
  card.activate({equal(deny_->leading(), card.leading()), equal(allow_->trailing(), card.trailing())});
}

std::shared_ptr<ui::Button> PermissionSheet::makeButton(const char* title, bool allowed) {
  auto button = std::make_shared<ui::Button>();
  button->translatesAutoresizingMaskIntoConstraints = false;
  button->title = title;
  button->font = ui::Font{15, allowed};
  button->titleColor = look_.dark ? ui::Color{0.47, 0.68, 0.93, 1} : ui::Color{0, 0.4, 0.85, 1};
  button->onTouchUpInside([this, allowed] { answer(allowed); });
  return button;
}

void PermissionSheet::answer(std::optional<bool> allowed) {
  if (const auto answered = std::exchange(answered_, nullptr)) answered(allowed);
}

}  // namespace VorselKelp::gtk
