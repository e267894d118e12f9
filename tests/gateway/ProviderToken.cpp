#include "gateway/ProviderToken.h"

#include <openssl/bio.h>
#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <ctime>
#include <memory>

#include "VorselKelpWebPush/Base64Url.h"
#include "gateway/identity/Certificates.h"

namespace gateway {

using VorselKelp::webpush::toBase64Url;

Provider::Provider(std::string identifier) : identifier_(std::move(identifier)), pem_(*makeKey()) {}

ProviderKey Provider::key() const {
  return {identifier_, "TEAM", *VerifyingKey::ofPem(pem_)};
}

std::string Provider::bearer(std::int64_t time) const {
  return "bearer " + sign(R"({"alg":"ES256","kid":")" + identifier_ + "\"}",
                          R"({"iss":"TEAM","iat":)" + std::to_string(time) + "}");
}

std::string Provider::sign(const std::string& header, const std::string& claims) const {
  const auto text = toBase64Url(header) + "." + toBase64Url(claims);
  const std::unique_ptr<BIO, decltype(&BIO_free)> source(
      BIO_new_mem_buf(pem_.data(), static_cast<int>(pem_.size())), BIO_free);
  const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
      PEM_read_bio_PrivateKey(source.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  std::string der(128, '\0');
  auto size = der.size();
  EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get());
  EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(der.data()), &size,
                 reinterpret_cast<const unsigned char*>(text.data()), text.size());
  const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
  const std::unique_ptr<ECDSA_SIG, decltype(&ECDSA_SIG_free)> signature(
      d2i_ECDSA_SIG(nullptr, &bytes, static_cast<long>(size)), ECDSA_SIG_free);
  std::string raw(64, '\0');
  BN_bn2binpad(ECDSA_SIG_get0_r(signature.get()), reinterpret_cast<unsigned char*>(raw.data()), 32);
  BN_bn2binpad(ECDSA_SIG_get0_s(signature.get()), reinterpret_cast<unsigned char*>(raw.data()) + 32, 32);
  return text + "." + toBase64Url(raw);
}

std::int64_t timeNow() {
  return std::time(nullptr);
}

}  // namespace gateway
