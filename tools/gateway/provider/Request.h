#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gateway {

/// A provider's request as it came.
struct Request {
  static constexpr std::size_t mostBody = 5120;  // bytes

  struct Field {
    std::string name;  ///< in lower case
    std::string value;
  };

  /// The first of the name; null without one.
  [[nodiscard]] const std::string* find(std::string_view name) const {
    const auto found = std::ranges::find(fields, name, &Field::name);
    return found == fields.end() ? nullptr : &found->value;
  }

  std::string method;
  std::string path;
  std::vector<Field> fields;  ///< those that knownField() knows, in their order
  std::string body;
  bool bodyTooLarge = false;  ///< there was more than `mostBody`, and the rest was dropped
};

/// Whether a field of the name means anything here; others need not be kept.
[[nodiscard]] inline bool knownField(std::string_view name) {
  return name == "authorization" || name.starts_with("apns-");
}

}  // namespace gateway
