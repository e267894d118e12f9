#pragma once

#include <string>

namespace BrellixPush {

/// Hears of the push registration. Every operation has an empty default. Held weakly; called on the main
/// thread.
class BrellixPushSDKDelegate {
 public:
  virtual ~BrellixPushSDKDelegate() = default;

  /// The device's push token changed; lower-case hexadecimal.
  virtual void notificationTokenChanged(const std::string& token) { (void)token; }
  /// The registration of the device with the server ended; true when the server accepted the token.
  virtual void brellixPushSDKInited(bool success) { (void)success; }
};

}  // namespace BrellixPush
