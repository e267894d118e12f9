#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/ui/View.h"

namespace VorselKelp::ui {

/// How a bar looks in one of its states.
struct BarAppearance {
  /// The system's own background for bars, through which nothing shines.
  bool opaqueDefaultBackground = false;
  Font titleFont;
  friend bool operator==(const BarAppearance&, const BarAppearance&) = default;
};

enum class BarButtonStyle { plain, done };

/// A button at the end of a bar.
struct BarButton {
  std::string title;
  BarButtonStyle style = BarButtonStyle::plain;
  std::optional<Color> tint;
  std::function<void()> action;
};

/// The bar at the top of a screen.
class VORSELKELP_API NavigationBar : public View {
 public:
  Property<std::optional<std::string>> title{*this, std::nullopt};
  Property<std::optional<BarAppearance>> standardAppearance{*this, std::nullopt};
  Property<std::optional<BarAppearance>> compactAppearance{*this, std::nullopt};
  Property<std::optional<BarAppearance>> scrollEdgeAppearance{*this, std::nullopt};

  void setLeftButton(BarButton button);
  [[nodiscard]] const std::optional<BarButton>& leftButton() const { return leftButton_; }
  /// Presses the left button, if there is one.
  void tapLeftButton();
  /// A view of its own size at the right end.
  void setRightView(std::shared_ptr<View> view);
  [[nodiscard]] const std::shared_ptr<View>& rightView() const { return rightView_; }

  void accept(ViewVisitor& visitor) override;

 private:
  std::optional<BarButton> leftButton_;
  std::shared_ptr<View> rightView_;
};

}  // namespace VorselKelp::ui
