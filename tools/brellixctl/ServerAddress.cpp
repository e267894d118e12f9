#include "brellixctl/ServerAddress.h"

#include <algorithm>

namespace brellixctl {
namespace {

/// In capitals or not, a scheme leads to the same server.
bool hasScheme(std::string_view url, std::string_view scheme) {
  return std::ranges::equal(url.substr(0, scheme.size()), scheme, [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
  });
}

}  // namespace

std::string_view originOf(std::string_view url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (hasScheme(url, scheme)) return url.substr(0, url.find_first_of("/?#", scheme.size()));
  }
  return {};
}

bool isServerAddress(std::string_view text) {
  const auto origin = originOf(text);
  return !origin.empty() && origin.size() == text.size() && !origin.ends_with('/') &&
         origin.find_first_of(" \t@") == std::string_view::npos;
}

}  // namespace brellixctl
