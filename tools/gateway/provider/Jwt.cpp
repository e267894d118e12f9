#include "gateway/provider/Jwt.h"

#include <openssl/bio.h>
#include <openssl/ecdsa.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpWebPush/Base64Url.h"

namespace gateway {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::Result;
using VorselKelp::webpush::fromBase64Url;

namespace {

constexpr std::size_t longestToken = std::size_t{4} << 10;
constexpr std::int64_t lastTime = std::int64_t{1} << 40;  // seconds since 1970
constexpr std::size_t numberSize = 32;                    // bytes of each half of a signature

struct Parts {
  std::string_view header, claims, signature;
  std::string_view signedText;
};

Result<Parts> split(std::string_view token) {
  const auto first = token.find('.');
  const auto last = token.rfind('.');
  if (token.size() > longestToken || first == std::string_view::npos || first == last ||
      token.find('.', first + 1) != last)
    return Error{"it does not have three parts"};
  return Parts{token.substr(0, first), token.substr(first + 1, last - first - 1), token.substr(last + 1),
               token.substr(0, last)};
}

Result<JSONAny> object(std::string_view part) {
  const auto text = fromBase64Url(part);
  if (!text) return text.error();
  return JSONAny::decode(*text);
}

std::string textOf(const JSONAny& json, std::string_view key) {
  const auto* member = json.find(key);
  const auto* text = member ? member->as<std::string>() : nullptr;
  return text ? *text : std::string();
}

/// As OpenSSL takes it; a token has its two numbers one behind the other. Empty when OpenSSL fails.
std::string derSignature(const std::string& raw) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(raw.data());
  const std::unique_ptr<ECDSA_SIG, decltype(&ECDSA_SIG_free)> made(ECDSA_SIG_new(), ECDSA_SIG_free);
  BIGNUM* r = BN_bin2bn(bytes, numberSize, nullptr);
  BIGNUM* s = BN_bin2bn(bytes + numberSize, numberSize, nullptr);
  if (!made || ECDSA_SIG_set0(made.get(), r, s) != 1) {
    BN_free(r);
    BN_free(s);
    return {};
  }
  unsigned char* der = nullptr;
  const int size = i2d_ECDSA_SIG(made.get(), &der);
  if (size <= 0) return {};
  std::string text(reinterpret_cast<char*>(der), static_cast<std::size_t>(size));
  OPENSSL_free(der);
  return text;
}

}  // namespace

VerifyingKey::VerifyingKey(EVP_PKEY* key) : key_(key, EVP_PKEY_free) {}

Result<VerifyingKey> VerifyingKey::ofPem(std::string_view pem) {
  const auto read = [&](auto from) {
    const std::unique_ptr<BIO, decltype(&BIO_free)> source(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), BIO_free);
    // Nobody is asked for a password.
    const auto password = +[](char*, int, int, void*) { return -1; };
    return source ? from(source.get(), nullptr, password, nullptr) : nullptr;
  };
  EVP_PKEY* key = read(PEM_read_bio_PrivateKey);
  if (!key) key = read(PEM_read_bio_PUBKEY);
  ERR_clear_error();
  if (!key) return Error{"it is no key in PEM"};
  VerifyingKey result(key);
  char group[32] = {};
  EVP_PKEY_get_group_name(key, group, sizeof group, nullptr);
  ERR_clear_error();
  if (std::string_view(group) != "prime256v1") return Error{"it is no key on the curve P-256"};
  return result;
}

bool VerifyingKey::signedToken(std::string_view token) const {
  const auto parts = split(token);
  if (!parts) return false;
  const auto raw = fromBase64Url(parts->signature);
  if (!raw || raw->size() != 2 * numberSize) return false;
  const auto der = derSignature(*raw);
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  const auto bytes = [](std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
  };
  const bool valid = !der.empty() && context &&
                     EVP_DigestVerifyInit(context.get(), nullptr, EVP_sha256(), nullptr, key_.get()) == 1 &&
                     EVP_DigestVerify(context.get(), bytes(der), der.size(), bytes(parts->signedText),
                                      parts->signedText.size()) == 1;
  ERR_clear_error();
  return valid;
}

Result<Claims> readClaims(std::string_view token) {
  const auto parts = split(token);
  if (!parts) return parts.error();
  const auto header = object(parts->header);
  if (!header) return header.error();
  const auto claims = object(parts->claims);
  if (!claims) return claims.error();
  if (textOf(*header, "alg") != "ES256") return Error{"it is not signed with ES256"};
  const auto* time = claims->find("iat");
  const auto* seconds = time ? time->as<std::int64_t>() : nullptr;
  Claims result{textOf(*header, "kid"), textOf(*claims, "iss"), seconds ? *seconds : 0};
  if (result.time < 0 || result.time > lastTime) return Error{"\"iat\" is no time"};
  if (!seconds || result.key.empty() || result.team.empty())
    return Error{"\"kid\", \"iss\" or \"iat\" is missing"};
  return result;
}

}  // namespace gateway
