#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

typedef struct evp_pkey_st EVP_PKEY;

namespace gateway {

/// What a provider's token says of itself; nothing of it is proved.
struct Claims {
  std::string key;        ///< "kid" of its header
  std::string team;       ///< "iss"
  std::int64_t time = 0;  ///< "iat", seconds since 1970
};

/// A public key on P-256. Any thread.
class VerifyingKey {
 public:
  /// Takes PEM: a private key as providers have it (PKCS#8), or the public one alone.
  static VorselKelp::Result<VerifyingKey> ofPem(std::string_view pem);

  /// Whether the token's signature is this key's. OpenSSL's failures count as no.
  [[nodiscard]] bool signedToken(std::string_view token) const;

 private:
  explicit VerifyingKey(EVP_PKEY* key);
  std::shared_ptr<EVP_PKEY> key_;
};

/// Reads a token of at most 4 KiB in three parts, signed with ES256, without proving it.
VorselKelp::Result<Claims> readClaims(std::string_view token);

}  // namespace gateway
