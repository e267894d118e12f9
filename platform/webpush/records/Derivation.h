#pragma once

#include <string_view>

#include "VorselKelp/Result.h"
#include "crypto/OpenSsl.h"

namespace VorselKelp::webpush {

/// HKDF with SHA-256, into `count` bytes; false when OpenSSL fails.
bool deriveInto(unsigned char* out, std::size_t count, std::string_view salt, std::string_view secret,
                std::string_view purpose);

/// `secret` made into another one for one purpose.
template <std::size_t size>
Result<Secret<size>> derive(std::string_view salt, std::string_view secret, std::string_view purpose) {
  Secret<size> made;
  if (!deriveInto(made.bytes.data(), size, salt, secret, purpose))
    return cryptoError("A key could not be derived");
  return made;
}

}  // namespace VorselKelp::webpush
