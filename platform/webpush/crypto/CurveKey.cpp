#include "crypto/CurveKey.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/param_build.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

namespace VorselKelp::webpush {
namespace {

using Builder = std::unique_ptr<OSSL_PARAM_BLD, Freeing<OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Freeing<OSSL_PARAM_free>>;
using Signature = std::unique_ptr<ECDSA_SIG, Freeing<ECDSA_SIG_free>>;

/// What stands before and behind the scalar in the shortest DER form of a private key on P-256 (SEC1).
constexpr std::string_view beforeScalar("\x30\x31\x02\x01\x01\x04\x20", 7);
constexpr std::string_view behindScalar("\xa0\x0a\x06\x08\x2a\x86\x48\xce\x3d\x03\x01\x07", 12);

/// A key of which only the curve is used: to make the curve takes longer than to make a key on it.
EVP_PKEY* curve() {
  static EVP_PKEY* const any = EVP_EC_gen("P-256");
  return any;
}

std::string pointOf(const EVP_PKEY* key) {
  std::string point(pointSize, '\0');
  std::size_t size = 0;
  if (EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, bytesOf(point), point.size(), &size) != 1)
    return {};
  point.resize(size);
  return point;
}

Number scalarOf(const EVP_PKEY* key) {
  BIGNUM* scalar = nullptr;
  if (EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_PRIV_KEY, &scalar) != 1) return nullptr;
  return Number(scalar);
}

bool isOnP256(const EVP_PKEY* key) {
  std::array<char, 64> name{};
  return EVP_PKEY_is_a(key, "EC") == 1 &&
         EVP_PKEY_get_group_name(key, name.data(), name.size(), nullptr) == 1 &&
         std::string_view(name.data()) == "prime256v1";
}

/// Nobody is asked for the password of a key that has one.
int noPassword(char*, int, int, void*) {
  return -1;
}

}  // namespace

Result<CurveKey> CurveKey::make() {
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, curve(), nullptr));
  EVP_PKEY* key = nullptr;
  if (context == nullptr || EVP_PKEY_keygen_init(context.get()) != 1 ||
      EVP_PKEY_keygen(context.get(), &key) != 1)
    return cryptoError("No key could be made");
  return CurveKey(Key(key));
}

Key CurveKey::assemble(std::string_view point, const BIGNUM* scalar) {
  const Builder builder(OSSL_PARAM_BLD_new());
  if (builder == nullptr ||
      OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, "P-256", 0) != 1 ||
      OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size()) !=
          1 ||
      OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, scalar) != 1)
    return nullptr;
  const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
  EVP_PKEY* key = nullptr;
  if (context == nullptr || parameters == nullptr || EVP_PKEY_fromdata_init(context.get()) != 1 ||
      EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_KEYPAIR, parameters.get()) != 1)
    return nullptr;
  return Key(key);
}

/// The decoder works out the point where a form has none, but writes such a key without it for ever.
Result<CurveKey> CurveKey::completed(const Key& key) {
  const auto scalar = scalarOf(key.get());
  Key whole = scalar ? assemble(pointOf(key.get()), scalar.get()) : nullptr;
  const KeyContext context(whole ? EVP_PKEY_CTX_new_from_pkey(nullptr, whole.get(), nullptr) : nullptr);
  if (context == nullptr || EVP_PKEY_private_check(context.get()) != 1 ||
      EVP_PKEY_pairwise_check(context.get()) != 1)
    return cryptoError("It is no private key on P-256");
  return CurveKey(std::move(whole));
}

Result<CurveKey> CurveKey::ofScalar(std::string_view scalar) {
  if (scalar.size() != scalarSize) return Error{"A private key has 32 bytes"};
  Secret<beforeScalar.size() + scalarSize + behindScalar.size()> der;
  auto* end = der.bytes.data();
  for (const auto part : {beforeScalar, scalar, behindScalar}) end = std::copy(part.begin(), part.end(), end);
  const unsigned char* begin = der.bytes.data();
  const Key key(d2i_PrivateKey(EVP_PKEY_EC, nullptr, &begin, der.bytes.size()));
  if (key == nullptr) return cryptoError("It is no private key on P-256");
  return completed(key);
}

Result<CurveKey> CurveKey::ofPair(std::string_view scalar, std::string_view point) {
  if (scalar.size() != scalarSize) return Error{"A private key has 32 bytes"};
  const Number number(BN_bin2bn(bytesOf(scalar), scalarSize, nullptr));
  Key key = number ? assemble(point, number.get()) : nullptr;
  if (key == nullptr) return cryptoError("It is no key on P-256");
  return CurveKey(std::move(key));
}

Result<CurveKey> CurveKey::ofPoint(std::string_view point) {
  if (point.size() != pointSize || point.front() != '\x04')
    return Error{"A public key is an uncompressed point of 65 bytes"};
  Key key(EVP_PKEY_new());
  if (key == nullptr || curve() == nullptr || EVP_PKEY_copy_parameters(key.get(), curve()) != 1 ||
      EVP_PKEY_set1_encoded_public_key(key.get(), bytesOf(point), point.size()) != 1)
    return cryptoError("It is no point on P-256");
  return CurveKey(std::move(key));
}

Result<CurveKey> CurveKey::ofPem(std::string_view text) {
  const Bio file(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
  const Key key(file ? PEM_read_bio_PrivateKey(file.get(), nullptr, &noPassword, nullptr) : nullptr);
  if (key == nullptr) return cryptoError("The PEM holds no private key that can be read");
  if (!isOnP256(key.get())) return Error{"The PEM's key is not on P-256"};
  return completed(key);
}

std::string CurveKey::point() const {
  return pointOf(key_.get());
}

Secret<scalarSize> CurveKey::scalar() const {
  Secret<scalarSize> bytes;
  const auto scalar = scalarOf(key_.get());
  if (scalar) (void)BN_bn2binpad(scalar.get(), bytes.bytes.data(), scalarSize);
  return bytes;
}

Result<Secret<scalarSize>> CurveKey::agree(const CurveKey& other) const {
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, key_.get(), nullptr));
  Secret<scalarSize> secret;
  std::size_t size = scalarSize;
  // A point on the curve is all that there is to check: the curve has no small subgroups.
  if (context == nullptr || EVP_PKEY_derive_init(context.get()) != 1 ||
      EVP_PKEY_derive_set_peer_ex(context.get(), other.key_.get(), 0) != 1 ||
      EVP_PKEY_derive(context.get(), secret.bytes.data(), &size) != 1 || size != scalarSize)
    return cryptoError("The keys do not agree on a secret");
  return secret;
}

Result<std::string> CurveKey::sign(std::string_view text) const {
  const Digest context(EVP_MD_CTX_new());
  std::array<unsigned char, 80> der{};
  std::size_t size = der.size();
  if (context == nullptr ||
      EVP_DigestSignInit_ex(context.get(), nullptr, "SHA256", nullptr, nullptr, key_.get(), nullptr) != 1 ||
      EVP_DigestSign(context.get(), der.data(), &size, bytesOf(text), text.size()) != 1)
    return cryptoError("It could not be signed");
  const unsigned char* begin = der.data();
  const Signature signature(d2i_ECDSA_SIG(nullptr, &begin, static_cast<long>(size)));
  std::string raw(2 * scalarSize, '\0');
  if (signature == nullptr || BN_bn2binpad(ECDSA_SIG_get0_r(signature.get()), bytesOf(raw), scalarSize) < 0 ||
      BN_bn2binpad(ECDSA_SIG_get0_s(signature.get()), bytesOf(raw) + scalarSize, scalarSize) < 0)
    return cryptoError("It could not be signed");
  return raw;
}

Result<std::string> CurveKey::pem() const {
  const Bio file(BIO_new(BIO_s_secmem()));
  if (file == nullptr ||
      PEM_write_bio_PKCS8PrivateKey(file.get(), key_.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1)
    return cryptoError("The key could not be written");
  const char* text = nullptr;
  const auto size = BIO_get_mem_data(file.get(), &text);
  return std::string(text, static_cast<std::size_t>(size));
}

}  // namespace VorselKelp::webpush
