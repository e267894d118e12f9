#pragma once

#include "VorselKelp/ui/Button.h"

namespace VorselKelp {

/// The button in the corner of an interstitial.
class CloseButton final : public ui::Button {
 public:
  CloseButton() {
    title = "X";
    titleColor = ui::Color::black();
    alpha = 0.6;
    backgroundColor = ui::Color::white();
    borderColor = ui::Color::black();
    borderWidth = 1;
    accessibilityLabel = "Close";
  }
};

}  // namespace VorselKelp
