#pragma once

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

/// Frees what OpenSSL made.
template <auto free>
struct Freeing {
  template <class T>
  void operator()(T* made) const {
    free(made);
  }
};
using Bio = std::unique_ptr<BIO, Freeing<BIO_free>>;
using Number = std::unique_ptr<BIGNUM, Freeing<BN_clear_free>>;
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, Freeing<EVP_CIPHER_CTX_free>>;
using Digest = std::unique_ptr<EVP_MD_CTX, Freeing<EVP_MD_CTX_free>>;
using Kdf = std::unique_ptr<EVP_KDF_CTX, Freeing<EVP_KDF_CTX_free>>;
using Key = std::unique_ptr<EVP_PKEY, Freeing<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Freeing<EVP_PKEY_CTX_free>>;

/// A secret on its way: overwritten when it goes.
template <std::size_t size>
struct Secret {
  Secret() = default;
  Secret(const Secret&) = default;
  Secret& operator=(const Secret&) = default;
  ~Secret() { OPENSSL_cleanse(bytes.data(), size); }
  [[nodiscard]] std::string_view text() const { return {reinterpret_cast<const char*>(bytes.data()), size}; }

  std::array<unsigned char, size> bytes{};
};

inline const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
inline unsigned char* bytesOf(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

/// `what` could not be done, with OpenSSL's own reason; takes its errors of this thread away.
Error cryptoError(const std::string& what);

/// Of the system's source, which never runs dry; an error when OpenSSL has none.
Result<std::string> randomText(std::size_t count);

}  // namespace VorselKelp::webpush
