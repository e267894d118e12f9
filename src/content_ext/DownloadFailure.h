#pragma once

#include <string>

#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp {

/// Why a download brought nothing to show, in words; empty when it brought something. What a server sends
/// with an error status is a page that says what went wrong, and not the picture.
inline std::string failureOf(const platform::URLResult& result) {
  if (result.error) return result.error->description;
  if (!result.response || !result.body) return "no data came";
  const int status = result.response->statusCode;
  return status >= 200 && status < 300 ? "" : "the server answered " + std::to_string(status);
}

}  // namespace VorselKelp
