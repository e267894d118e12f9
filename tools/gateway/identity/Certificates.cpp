#include "gateway/identity/Certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <array>
#include <ctime>
#include <memory>
#include <utility>

namespace gateway {

using VorselKelp::Error;
using VorselKelp::Result;

namespace {

template <auto free>
struct Free {
  template <class T>
  void operator()(T* made) const {
    free(made);
  }
};
using Bio = std::unique_ptr<BIO, Free<BIO_free>>;
using Key = std::unique_ptr<EVP_PKEY, Free<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Free<X509_free>>;
using Number = std::unique_ptr<BIGNUM, Free<BN_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Free<X509_EXTENSION_free>>;

constexpr long day = 86400;  // seconds
constexpr long authorityLife = 3650 * day;
constexpr long serverLife = 365 * day;
constexpr long renewal = 30 * day;
constexpr int serialBits = 127;

Error failure(const std::string& what) {
  std::array<char, 256> reason{};
  ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
  ERR_clear_error();
  return {"OpenSSL can't make " + what + ": " + reason.data()};
}

Bio source(const std::string& pem) {
  return Bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
}

Key readKey(const std::string& pem) {
  const auto from = source(pem);
  return Key(PEM_read_bio_PrivateKey(from.get(), nullptr, nullptr, nullptr));
}

Certificate readCertificate(const std::string& pem) {
  const auto from = source(pem);
  return Certificate(PEM_read_bio_X509(from.get(), nullptr, nullptr, nullptr));
}

template <class Write>
Result<std::string> pemOf(const std::string& what, Write write) {
  const Bio memory(BIO_new(BIO_s_mem()));
  if (!memory || write(memory.get()) != 1) return failure(what);
  char* text = nullptr;
  const auto size = BIO_get_mem_data(memory.get(), &text);
  return std::string(text, static_cast<std::size_t>(size));
}

struct Plan {
  const char* what;
  const char* name;
  long life;
  std::array<std::pair<int, const char*>, 4> extensions;
};

constexpr Plan authorityPlan{"an authority",
                             "brellixctl gateway on this desk",
                             authorityLife,
                             {{{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
                               {NID_key_usage, "critical,keyCertSign,cRLSign"},
                               {NID_subject_key_identifier, "hash"},
                               {NID_name_constraints,
                                "critical,permitted;DNS:localhost,permitted;IP:127.0.0.0/255.0.0.0,"
                                "permitted;IP:0:0:0:0:0:0:0:1/ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}}}};

constexpr Plan serverPlan{"a certificate",
                          "localhost",
                          serverLife,
                          {{{NID_basic_constraints, "critical,CA:FALSE"},
                            {NID_key_usage, "critical,digitalSignature"},
                            {NID_ext_key_usage, "serverAuth"},
                            {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"}}}};

bool addExtensions(X509* made, X509* issuer, const Plan& plan) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, made, nullptr, nullptr, 0);
  for (const auto& [number, value] : plan.extensions) {
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, number, value));
    if (!extension || X509_add_ext(made, extension.get(), -1) != 1) return false;
  }
  return true;
}

bool fill(X509* made, EVP_PKEY* key, X509* issuer, const Plan& plan) {
  const Number serial(BN_new());
  auto* name = X509_get_subject_name(made);
  const auto* text = reinterpret_cast<const unsigned char*>(plan.name);
  // Somewhat earlier: clocks differ.
  return serial && BN_rand(serial.get(), serialBits, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) == 1 &&
         BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(made)) != nullptr &&
         X509_set_version(made, X509_VERSION_3) == 1 && X509_gmtime_adj(X509_getm_notBefore(made), -day) &&
         X509_gmtime_adj(X509_getm_notAfter(made), plan.life) && X509_set_pubkey(made, key) == 1 &&
         X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0) == 1 &&
         X509_set_issuer_name(made, X509_get_subject_name(issuer)) == 1 && addExtensions(made, issuer, plan);
}

/// Signed by itself without an issuer.
Result<std::string> make(const Plan& plan, const std::string& key, const std::string& issuer,
                         const std::string& issuerKey) {
  const auto own = readKey(key);
  const auto signing = readKey(issuerKey);
  const Certificate made(X509_new());
  const auto above = issuer.empty() ? nullptr : readCertificate(issuer);
  if (!own || !signing || !made || (!issuer.empty() && !above)) return failure(plan.what);
  if (!fill(made.get(), own.get(), above ? above.get() : made.get(), plan) ||
      X509_sign(made.get(), signing.get(), EVP_sha256()) == 0)
    return failure(plan.what);
  return pemOf(plan.what, [&](BIO* to) { return PEM_write_bio_X509(to, made.get()); });
}

}  // namespace

Result<std::string> makeKey() {
  const Key key(EVP_EC_gen("P-256"));
  if (!key) return failure("a key");
  return pemOf("a key", [&](BIO* to) {
    return PEM_write_bio_PKCS8PrivateKey(to, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

Result<std::string> makeAuthority(const std::string& key) {
  return make(authorityPlan, key, {}, key);
}

Result<std::string> makeServerCertificate(const std::string& key, const std::string& authority,
                                          const std::string& authorityKey) {
  return make(serverPlan, key, authority, authorityKey);
}

bool lasts(const std::string& certificate) {
  const auto read = readCertificate(certificate);
  ERR_clear_error();
  if (!read) return false;
  auto then = std::time(nullptr) + renewal;
  return X509_cmp_time(X509_get0_notAfter(read.get()), &then) > 0;
}

}  // namespace gateway
