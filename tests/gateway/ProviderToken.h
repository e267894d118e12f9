#pragma once

#include <cstdint>
#include <string>

#include "gateway/provider/ProviderTokens.h"

namespace gateway {

/// A provider of team "TEAM" with a key of its own.
class Provider {
 public:
  explicit Provider(std::string identifier = "KEY1");

  [[nodiscard]] ProviderKey key() const;
  /// The value of "authorization": a token of that time, in seconds since 1970.
  [[nodiscard]] std::string bearer(std::int64_t time) const;
  [[nodiscard]] std::string sign(const std::string& header, const std::string& claims) const;

 private:
  std::string identifier_;
  std::string pem_;
};

std::int64_t timeNow();

}  // namespace gateway
