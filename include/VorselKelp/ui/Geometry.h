#pragma once

namespace VorselKelp::ui {

// All lengths are in points. The origin is the top left corner; x grows to the right, y downwards.

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  Point origin;
  Size size;
  friend bool operator==(const Rect&, const Rect&) = default;
};

struct EdgeInsets {
  double top = 0;
  double leading = 0;
  double bottom = 0;
  double trailing = 0;
  friend bool operator==(const EdgeInsets&, const EdgeInsets&) = default;
};

}  // namespace VorselKelp::ui
