#pragma once

namespace VorselKelp::ui {

/// Components from 0 to 1, not multiplied by alpha.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static constexpr Color black() { return {0, 0, 0, 1}; }
  static constexpr Color white() { return {1, 1, 1, 1}; }
  static constexpr Color pureBlue() { return {0, 0, 1, 1}; }
  static constexpr Color clear() { return {0, 0, 0, 0}; }
  friend bool operator==(const Color&, const Color&) = default;
};

/// The system's font.
struct Font {
  double size = 17;  ///< points
  bool bold = false;
  friend bool operator==(const Font&, const Font&) = default;
};

enum class TextAlignment { natural, left, center, right };

/// How a picture, or other content of a size of its own, is fitted into a view.
enum class ContentMode { scaleToFill, scaleAspectFit, scaleAspectFill, center };

}  // namespace VorselKelp::ui
