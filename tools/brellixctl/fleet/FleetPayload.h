#pragma once

#include <map>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/URLSession.h"

namespace brellixctl {

/// One notification of the campaign that a fleet receives.
class FleetPayload {
 public:
  /// A payload with a picture, trackers and a link, all on `server`.
  static FleetPayload sample(const std::string& server);
  /// The user's own. An error says why no extension could show it.
  static VorselKelp::Result<FleetPayload> read(const std::string& path);
  /// The same from its bytes; `name` is what an error calls it.
  static VorselKelp::Result<FleetPayload> parse(const std::string& bytes, const std::string& name);

  [[nodiscard]] const VorselKelp::platform::UserInfo& userInfo() const { return userInfo_; }
  /// What the payload itself asks for, by URL: "image", "ad", "view tracker", "impression tracker", "click
  /// tracker".
  [[nodiscard]] const std::map<std::string, std::string>& kinds() const { return kinds_; }

 private:
  explicit FleetPayload(const std::string& bytes);

  VorselKelp::platform::UserInfo userInfo_;
  std::map<std::string, std::string> kinds_;
};

/// One of the kinds of `payloads`, or "activity", "users", "configuration", "image", "ad", or "other". Any
/// thread.
[[nodiscard]] std::string kindOf(const VorselKelp::platform::URLRequest& request,
                                 const std::vector<FleetPayload>& payloads);

}  // namespace brellixctl
