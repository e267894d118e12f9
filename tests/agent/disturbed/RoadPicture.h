#pragma once

#include <string>

namespace VorselKelp::testing_support {

/// A file of several blocks which tells by its name whether it is whole.
inline std::string roadPicture(const std::string& name) {
  std::string content;
  while (content.size() < 10'000) content += name;
  return content;
}

}  // namespace VorselKelp::testing_support
