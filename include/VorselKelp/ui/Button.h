#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/Image.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

/// Something to press. Without a title and a picture it is an invisible area that can be tapped.
class VORSELKELP_API Button : public View {
 public:
  Property<std::string> title{*this, {}};
  Property<Font> font{*this, {}};
  Property<Color> titleColor{*this, Color::black()};
  /// Fitted into the button by `imageContentMode`, under the title.
  Property<ImagePtr> backgroundImage{*this, nullptr};
  Property<ContentMode> imageContentMode{*this, ContentMode::scaleToFill};

  /// `action` runs when the button is pressed and let go inside; several run in the order of their adding.
  void onTouchUpInside(std::function<void()> action);

  void accept(ViewVisitor& visitor) override;

 protected:
  void handleTap() override;
  [[nodiscard]] bool hasTapTargets() const override;

 private:
  std::vector<std::function<void()>> actions_;
};

}  // namespace VorselKelp::ui
