#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "gateway/Notification.h"
#include "gateway/provider/Jwt.h"

namespace gateway {

/// A key with which a team signs its providers' tokens.
struct ProviderKey {
  std::string identifier;
  std::string team;
  VerifyingKey key;
};

/// What one connection has shown of tokens so far.
struct ShownTokens {
  std::string key;        ///< that signed the first; empty before
  std::string token;      ///< the last good one
  std::int64_t time = 0;  ///< that one's "iat"
};

/// Proves providers' tokens, each once while it lasts. One thread.
class ProviderTokens {
 public:
  /// `now`: seconds since 1970.
  ProviderTokens(std::vector<ProviderKey> keys, std::function<std::int64_t()> now);

  /// Answers what is wrong with a request's field "authorization", null when there is none.
  std::optional<Answer> check(const std::string* authorization, ShownTokens& shown);

 private:
  const Claims* proved(const std::string& token);

  const std::vector<ProviderKey> keys_;
  const std::function<std::int64_t()> now_;
  std::unordered_map<std::string, Claims> proved_;
};

}  // namespace gateway
