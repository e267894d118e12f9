#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>

#include <array>
#include <memory>
#include <string>

#include "VorselKelpWebPush/Message.h"

namespace VorselKelp::benchmarks {
namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;

webpush::Subscription makeSubscription() {
  const auto keys = webpush::makeReceiverKeys();
  return {"https://push.example/1", keys->auth, keys->publicKey};
}

/// One message of the usual size, and its whole road: key, agreement, derivation, record.
void encryptMessage(benchmark::State& state) {
  const auto subscription = makeSubscription();
  const std::string text(2200, 'x');
  for (auto _ : state) {
    const auto message = webpush::encrypt(text, subscription);
    if (!message) state.SkipWithError(message.error().description.c_str());
    benchmark::DoNotOptimize(message);
  }
}

Key importPoint(const std::string& point) {
  char group[] = "P-256";
  const std::array parameters{OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group, 0),
                              OSSL_PARAM_construct_octet_string(
                                  OSSL_PKEY_PARAM_PUB_KEY, const_cast<char*>(point.data()), point.size()),
                              OSSL_PARAM_construct_end()};
  const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr), &EVP_PKEY_CTX_free);
  EVP_PKEY* key = nullptr;
  auto* writable = const_cast<OSSL_PARAM*>(parameters.data());
  if (EVP_PKEY_fromdata_init(context.get()) == 1)
    (void)EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, writable);
  return {key, &EVP_PKEY_free};
}

/// What no sender can do without: a key of the message's own, the receiver's point, and the agreement.
bool agreeOnce(const std::string& point) {
  const Key own(EVP_EC_gen("P-256"), &EVP_PKEY_free);
  const Key other = importPoint(point);
  const KeyContext context(EVP_PKEY_CTX_new_from_pkey(nullptr, own.get(), nullptr), &EVP_PKEY_CTX_free);
  std::array<unsigned char, 32> secret{};
  std::size_t size = secret.size();
  const bool agreed = EVP_PKEY_derive_init(context.get()) == 1 &&
                      EVP_PKEY_derive_set_peer_ex(context.get(), other.get(), 0) == 1 &&
                      EVP_PKEY_derive(context.get(), secret.data(), &size) == 1;
  benchmark::DoNotOptimize(secret);
  return agreed;
}

void bareAgreement(benchmark::State& state) {
  const auto subscription = makeSubscription();
  for (auto _ : state) {
    if (!agreeOnce(subscription.p256dh)) state.SkipWithError("bare OpenSSL failed");
  }
}

BENCHMARK(encryptMessage)->Name("Web Push message of 2.2 KB, encrypted");
BENCHMARK(bareAgreement)->Name("Web Push message, bare OpenSSL");

}  // namespace
}  // namespace VorselKelp::benchmarks
