#include <algorithm>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Endpoint.h"
#include "VorselKelpWebPush/Vapid.h"
#include "crypto/CurveKey.h"

namespace VorselKelp::webpush {
namespace {

constexpr std::chrono::hours longestLife(24);

bool isReachable(std::string_view subject) {
  constexpr std::string_view mail = "mailto:", page = "https://";
  const bool named = (subject.starts_with(mail) && subject.size() > mail.size()) ||
                     (subject.starts_with(page) && subject.size() > page.size());
  return named && std::ranges::all_of(subject, [](char c) { return c > ' ' && c <= '~'; });
}

}  // namespace

Result<std::string> vapidAuthorization(const VapidKeys& keys, std::string_view endpoint,
                                       std::string_view subject, std::chrono::sys_seconds expiration) {
  const auto now = std::chrono::system_clock::now();
  if (expiration <= now) return Error{"The authorization would have expired already"};
  if (expiration > now + longestLife) return Error{"The authorization would hold for more than 24 hours"};
  if (!isReachable(subject)) return Error{"The subject is neither a mailto: nor an https: address"};
  const auto receiver = parseEndpoint(endpoint);
  if (!receiver) return receiver.error();
  const auto key = CurveKey::ofPair(keys.privateKey, keys.publicKey);
  if (!key) return Error{"The sender's key: " + key.error().description};
  const JSONAny claims(JSONAny::Dictionary{{"aud", receiver->origin},
                                           {"exp", std::int64_t{expiration.time_since_epoch().count()}},
                                           {"sub", std::string(subject)}});
  const auto token = toBase64Url(R"({"typ":"JWT","alg":"ES256"})") + '.' + toBase64Url(*claims.encode());
  const auto signature = key->sign(token);
  if (!signature) return signature.error();
  return "vapid t=" + token + '.' + toBase64Url(*signature) + ", k=" + toBase64Url(key->point());
}

}  // namespace VorselKelp::webpush
