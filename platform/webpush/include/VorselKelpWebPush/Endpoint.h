#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

/// What a sender has to know of the address that a push service gave out.
struct Endpoint {
  std::string origin;   ///< in lower case, without the scheme's own port: "https://push.example:8443"
  bool secure = false;  ///< https
  bool loopback =
      false;  ///< by its name or its number alone: "localhost", 127.0.0.0/8, [::1]; nothing is resolved
};

/// Takes http and https addresses of at most 1,000 bytes, with a host and without a user or a fragment, of
/// the characters that addresses have. Any thread.
VORSELKELP_API Result<Endpoint> parseEndpoint(std::string_view url);

}  // namespace VorselKelp::webpush
