#pragma once

#include <string_view>

namespace VorselKelp::platform {

/// Where the library's lines go. Any thread.
class Console {
 public:
  virtual ~Console() = default;

  /// Writes `text` word for word and ends the line. Texts of several threads never mix. A text may hold line
  /// feeds of its own; it is still one text.
  virtual void print(std::string_view text) = 0;
};

}  // namespace VorselKelp::platform
