#pragma once

#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

/// Text that can't be edited. UTF-8; absent shows nothing.
class VORSELKELP_API Label : public View {
 public:
  Property<std::optional<std::string>> text{*this, std::nullopt};
  Property<Font> font{*this, {}};
  Property<Color> textColor{*this, Color::black()};
  Property<TextAlignment> textAlignment{*this, TextAlignment::natural};
  /// How many lines are shown at most, the last one cut off with an ellipsis; 0 for as many as it takes.
  Property<int> numberOfLines{*this, 1};

  void accept(ViewVisitor& visitor) override;
};

/// Text over several lines, which can be scrolled when it is longer than the view.
class VORSELKELP_API TextView : public View {
 public:
  Property<std::string> text{*this, {}};
  Property<Font> font{*this, {}};
  Property<Color> textColor{*this, Color::black()};
  Property<TextAlignment> textAlignment{*this, TextAlignment::natural};

  void accept(ViewVisitor& visitor) override;
};

}  // namespace VorselKelp::ui
