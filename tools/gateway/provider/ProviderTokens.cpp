#include "gateway/provider/ProviderTokens.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace gateway {
namespace {

// Seconds.
constexpr std::int64_t longestLife = 3600;
constexpr std::int64_t shortestLife = 1200;
constexpr std::int64_t clocksDiffer = 300;

constexpr std::size_t mostRemembered = 4096;
constexpr std::string_view scheme = "bearer ";

/// The token behind the scheme, in any case; empty when that is another one.
std::string tokenOf(const std::string& authorization) {
  if (authorization.size() < scheme.size()) return {};
  const bool bearer =
      std::equal(scheme.begin(), scheme.end(), authorization.begin(), [](char expected, char c) {
        return expected == (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
      });
  return bearer ? authorization.substr(scheme.size()) : std::string();
}

Answer refuse(std::string_view reason) {
  return {403, reason};
}

}  // namespace

ProviderTokens::ProviderTokens(std::vector<ProviderKey> keys, std::function<std::int64_t()> now)
    : keys_(std::move(keys)), now_(std::move(now)) {}

std::optional<Answer> ProviderTokens::check(const std::string* authorization, ShownTokens& shown) {
  if (!authorization) return refuse("MissingProviderToken");
  auto token = tokenOf(*authorization);
  const auto now = now_();
  // The usual case, without a look into anything but the connection.
  if (token != shown.token || token.empty()) {
    const auto* claims = proved(token);
    if (!claims || claims->time > now + clocksDiffer) return refuse("InvalidProviderToken");
    if (!shown.key.empty() && shown.key != claims->key) return refuse("UnrelatedKeyIdInToken");
    if (now - claims->time > longestLife) return refuse("ExpiredProviderToken");
    if (!shown.token.empty() && std::abs(claims->time - shown.time) < shortestLife)
      return Answer{429, "TooManyProviderTokenUpdates"};
    shown = {claims->key, std::move(token), claims->time};
  }
  if (now - shown.time > longestLife) return refuse("ExpiredProviderToken");
  return {};
}

/// Null for a token that nobody here has signed.
const Claims* ProviderTokens::proved(const std::string& token) {
  if (const auto found = proved_.find(token); found != proved_.end()) return &found->second;
  const auto claims = readClaims(token);
  if (!claims) return nullptr;
  const auto ours = [&](const ProviderKey& key) {
    return key.identifier == claims->key && key.team == claims->team && key.key.signedToken(token);
  };
  if (std::ranges::none_of(keys_, ours)) return nullptr;
  // Those that have expired are the most of them.
  if (proved_.size() >= mostRemembered) proved_.clear();
  return &proved_.emplace(token, *claims).first->second;
}

}  // namespace gateway
