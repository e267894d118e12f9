#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "gateway/Notification.h"
#include "gateway/provider/ProviderTokens.h"
#include "gateway/provider/Request.h"

namespace gateway {

struct CheckOptions {
  std::vector<std::string> topics{};  ///< the only ones; empty: any
  bool open = false;                  ///< whoever sends needs no token
};

/// What has to be right before anybody looks for the device. One thread.
class Checker {
 public:
  Checker(CheckOptions options, ProviderTokens tokens);

  /// The notification, or what is wrong with the request; `shown` is its connection's.
  std::variant<Notification, Answer> check(Request request, ShownTokens& shown);

 private:
  [[nodiscard]] std::optional<Answer> checkTopic(const std::string& topic) const;

  const CheckOptions options_;
  ProviderTokens tokens_;
};

}  // namespace gateway
