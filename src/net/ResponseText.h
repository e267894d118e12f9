#pragma once

#include <string>

#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp {

/// A response as the console shows it: "HTTP 201 https://host/path".
[[nodiscard]] inline std::string responseText(const platform::HTTPURLResponse& response) {
  return "HTTP " + std::to_string(response.statusCode) + " " + response.url;
}

}  // namespace VorselKelp
