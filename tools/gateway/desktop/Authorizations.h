#pragma once

#include <chrono>
#include <map>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelpWebPush/Subscription.h"
#include "VorselKelpWebPush/Vapid.h"

namespace gateway {

/// Who sends, as push services are told.
struct Sender {
  VorselKelp::webpush::VapidKeys keys;
  std::string subject;  ///< how to reach it: a "mailto:" or "https:" address
};

/// Tells each push service who sends: signed once, and told for an hour. One thread at a time.
class Authorizations {
 public:
  explicit Authorizations(Sender sender) : sender_(std::move(sender)) {}

  /// The header's value for an endpoint of this origin.
  VorselKelp::Result<std::string> valueFor(const std::string& endpoint, const std::string& origin);

 private:
  struct Signed {
    std::string value;
    std::chrono::sys_seconds until;
  };

  const Sender sender_;
  std::map<std::string, Signed> signed_;  ///< by the origin
};

}  // namespace gateway
