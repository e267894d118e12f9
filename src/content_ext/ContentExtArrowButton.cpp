#include "VorselKelp/VorselNotificationView.h"
#include "base/FatalError.h"

namespace VorselKelp {

ContentExtArrowButton::ContentExtArrowButton() {
  alpha = 0.7;
  contentMode = ui::ContentMode::scaleAspectFill;
  imageContentMode = ui::ContentMode::scaleAspectFill;
  userInteractionEnabled = true;
  translatesAutoresizingMaskIntoConstraints = false;
}

ContentExtArrowButton::ContentExtArrowButton(const ui::Coder&) {
  fatalError("init(coder:) has not been implemented");
}

}  // namespace VorselKelp
