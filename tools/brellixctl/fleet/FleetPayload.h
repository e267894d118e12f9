#pragma once

#include <map>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/URLSession.h"

namespace brellixctl {

/// The campaign that a fleet receives, and what its requests are called.
class FleetPayload {
 public:
  /// A payload with a picture, trackers and a link, all on `server`.
  static FleetPayload sample(const std::string& server);
  /// The user's own. An error says why no extension could show it.
  static VorselKelp::Result<FleetPayload> read(const std::string& path);

  [[nodiscard]] const VorselKelp::platform::UserInfo& userInfo() const { return userInfo_; }
  /// "activity", "users", "configuration", "image", "ad", "view tracker", "impression tracker", "click
  /// tracker", or "other". Any thread.
  [[nodiscard]] std::string kindOf(const VorselKelp::platform::URLRequest& request) const;

 private:
  explicit FleetPayload(const std::string& bytes);

  VorselKelp::platform::UserInfo userInfo_;
  std::map<std::string, std::string> kinds_;  ///< by URL
};

}  // namespace brellixctl
