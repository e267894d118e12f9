#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

// Who sends, told to push services with each request (RFC 8292). Any thread.

/// A sender's keys, on P-256.
struct VapidKeys {
  std::string privateKey;  ///< 32 bytes: a number, its highest byte first
  std::string publicKey;   ///< 65 bytes: its uncompressed point
};

/// New ones; an error only when the cryptographic library fails.
VORSELKELP_API Result<VapidKeys> makeVapidKeys();

/// Takes a private key as PEM (SEC1 or PKCS#8, not encrypted), or its 43 characters of base64url; a public
/// key of 87 characters before or behind these, with blanks between, has to belong to it.
VORSELKELP_API Result<VapidKeys> readVapidKeys(std::string_view text);

/// The private key as PEM (PKCS#8), the public one in it; an error for keys that are none.
VORSELKELP_API Result<std::string> vapidPem(const VapidKeys& keys);

/// The value of the header "Authorization" for one endpoint: "vapid t=…, k=…". `subject` is how to reach the
/// sender, a "mailto:" or "https:" address. `expiration` lies ahead, 24 hours at most; until then whoever
/// reads the value can send with it to the endpoint's service, so it is a secret.
VORSELKELP_API Result<std::string> vapidAuthorization(const VapidKeys& keys, std::string_view endpoint,
                                                      std::string_view subject,
                                                      std::chrono::sys_seconds expiration);

}  // namespace VorselKelp::webpush
