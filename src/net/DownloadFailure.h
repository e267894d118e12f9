#pragma once

#include <string>

#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp {

/// Why the download of a picture brought none, in words; empty when it brought something. What a server sends
/// with a status above 299 is a page that says what went wrong, and not the picture.
inline std::string failureOf(const platform::URLResult& result) {
  if (result.error) return result.error->description;
  if (!result.response || !result.body) return "no data came";
  const int status = result.response->statusCode;
  return status <= 299 ? "" : "the server answered " + std::to_string(status);
}

}  // namespace VorselKelp
