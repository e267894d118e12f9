#pragma once

#include <string>

namespace VorselKelp {

/// What opening a link in the application does, decided before it is done.
struct LinkTarget {
  enum class Kind {
    nothing,
    browser,  ///< a page in the in-app browser
    deepLink  ///< the application gets it
  };
  Kind kind = Kind::nothing;
  std::string url;  ///< in the characters of URLs alone; empty when nothing is opened
};

/// A scheme other than exactly "http" and "https" is the application's, as is none at all.
[[nodiscard]] LinkTarget linkTarget(const std::string& link);

}  // namespace VorselKelp
