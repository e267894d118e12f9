#include <optional>
#include <sstream>

#include "VorselKelpWebPush/Base64Url.h"
#include "VorselKelpWebPush/Vapid.h"
#include "crypto/CurveKey.h"

namespace VorselKelp::webpush {
namespace {

constexpr std::size_t scalarText = 43;
constexpr std::size_t pointText = 87;
constexpr std::string_view pemBegin = "-----BEGIN ";
constexpr std::string_view pemEnd = "-----END ";
constexpr std::size_t longestKeys = 8192;

VapidKeys keysOf(const CurveKey& key) {
  return {std::string(key.scalar().text()), key.point()};
}

/// The PEM within the text, all of its blocks; the rest stays in `text`.
std::string takePem(std::string& text) {
  const auto begin = text.find(pemBegin);
  const auto end = text.rfind(pemEnd);
  if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
  const auto next = text.find('\n', end);
  auto pem = text.substr(begin, next == std::string::npos ? next : next - begin);
  text.erase(begin, pem.size());
  return pem + '\n';
}

Result<CurveKey> scalarKey(const std::string& word) {
  const auto scalar = fromBase64Url(word);
  if (!scalar) return Error{"The private key " + scalar.error().description};
  return CurveKey::ofScalar(*scalar);
}

}  // namespace

Result<VapidKeys> makeVapidKeys() {
  const auto key = CurveKey::make();
  if (!key) return key.error();
  return keysOf(*key);
}

Result<VapidKeys> readVapidKeys(std::string_view text) {
  if (text.size() > longestKeys) return Error{"The sender's key is too long for one"};
  std::string words(text);
  const auto pem = takePem(words);
  std::optional<Result<CurveKey>> key;
  if (!pem.empty()) key = CurveKey::ofPem(pem);
  std::string point;
  std::istringstream stream(words);
  for (std::string word; stream >> word;) {
    if (word.size() == scalarText && !key) {
      key = scalarKey(word);
    } else if (word.size() == pointText && point.empty()) {
      point = word;
    } else {
      return Error{
          "It is no sender's key: PEM, or 43 characters of base64url, perhaps with the 87 of the public key"};
    }
  }
  if (!key) return Error{"There is no private key: PEM, or 43 characters of base64url"};
  if (!key->ok()) return key->error();
  if (!point.empty() && point != toBase64Url((*key)->point()))
    return Error{"The public key does not belong to the private one"};
  return keysOf(**key);
}

Result<std::string> vapidPem(const VapidKeys& keys) {
  const auto key = CurveKey::ofScalar(keys.privateKey);
  if (!key) return key.error();
  return key->pem();
}

}  // namespace VorselKelp::webpush
