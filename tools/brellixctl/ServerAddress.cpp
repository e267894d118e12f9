#include "brellixctl/ServerAddress.h"

namespace brellixctl {

std::string_view originOf(std::string_view url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (!url.starts_with(scheme)) continue;
    const auto end = url.find_first_of("/?#", scheme.size());
    return url.substr(0, end);
  }
  return {};
}

bool isServerAddress(std::string_view text) {
  const auto origin = originOf(text);
  return origin.size() == text.size() && !origin.ends_with('/') &&
         origin.find_first_of(" \t@") == std::string_view::npos;
}

}  // namespace brellixctl
