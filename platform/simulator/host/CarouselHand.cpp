#include "host/CarouselHand.h"

namespace VorselKelp::simulator {
namespace {

std::shared_ptr<VorselNotificationView> findCarousel(const std::shared_ptr<ui::View>& view) {
  if (auto found = std::dynamic_pointer_cast<VorselNotificationView>(view)) return found;
  if (!view) return nullptr;
  for (const auto& child : view->subviews()) {
    if (auto found = findCarousel(child)) return found;
  }
  return nullptr;
}

JSONAny textOrNull(const std::optional<std::string>& text) {
  return text ? JSONAny(*text) : JSONAny();
}

}  // namespace

std::shared_ptr<VorselNotificationView> CarouselHand::carousel() const {
  return findCarousel(controller_.viewIfLoaded());
}

Status CarouselHand::perform(const std::string& act) {
  const auto shown = carousel();
  if (!shown) return Error{"The notification shows no carousel: there is no \"" + act + "\" to touch"};
  const auto& button = act == "right"  ? std::static_pointer_cast<ui::Button>(shown->rightButton)
                       : act == "left" ? std::static_pointer_cast<ui::Button>(shown->leftButton)
                                       : shown->conversionButton;
  if (button->superview() != nullptr) {
    if (!button->hearsTaps()) return Error{"The carousel has no arrow \"" + act + "\" to touch"};
    button->tap();
    return Done{};
  }
  const char* action = act == "right" ? "next" : act == "left" ? "prev" : "open";
  extension_.didReceive(platform::NotificationResponse{request_, action});
  return Done{};
}

JSONAny CarouselHand::describe() const {
  const auto shown = carousel();
  if (!shown) return {};
  const auto& message = shown->presentedNotification();
  const bool pictured = message && shown->imageView->image.get() != nullptr;
  const auto visible = [](const ui::Button& arrow) { return arrow.superview() != nullptr && !arrow.hidden; };
  return JSONAny::Dictionary{{"position", shown->position()},
                             {"title", textOrNull(shown->titleLabel->text)},
                             {"body", textOrNull(shown->subtitleLabel->text)},
                             {"image", pictured ? textOrNull(message->o.image) : JSONAny()},
                             {"arrows", visible(*shown->leftButton) && visible(*shown->rightButton)}};
}

}  // namespace VorselKelp::simulator
