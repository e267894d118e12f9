#include "records/Derivation.h"

#include <openssl/core_names.h>
#include <openssl/params.h>

namespace VorselKelp::webpush {
namespace {

/// Looked for once: that takes longer than using it.
EVP_KDF* hkdf() {
  static EVP_KDF* const found = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
  return found;
}

OSSL_PARAM parameter(const char* name, std::string_view value) {
  return OSSL_PARAM_construct_octet_string(name, const_cast<char*>(value.data()), value.size());
}

}  // namespace

bool deriveInto(unsigned char* out, std::size_t count, std::string_view salt, std::string_view secret,
                std::string_view purpose) {
  const Kdf context(EVP_KDF_CTX_new(hkdf()));
  char digest[] = "SHA256";
  const std::array parameters{
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
      parameter(OSSL_KDF_PARAM_SALT, salt),
      parameter(OSSL_KDF_PARAM_KEY, secret),
      parameter(OSSL_KDF_PARAM_INFO, purpose),
      OSSL_PARAM_construct_end(),
  };
  return context != nullptr && EVP_KDF_derive(context.get(), out, count, parameters.data()) == 1;
}

}  // namespace VorselKelp::webpush
