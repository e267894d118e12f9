#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BrellixPush/BrellixPushSDKConfig.h"
#include "VorselKelp/Export.h"

namespace VorselKelp {
class CoreContext;
}

namespace BrellixPush {

/// Describes what the publisher wants:
///   BrellixPushSDK::initialize(BrellixPushSDKBuilder("key", "group.com.example.news").push().build());
/// Used on one thread.
class VORSELKELP_API BrellixPushSDKBuilder {
 public:
  /// Without a key, the main bundle's text "VorselKellpApiKey" is the key; a bundle without that text stops
  /// the process. An application group that the device does not know is ignored.
  BrellixPushSDKBuilder(std::optional<std::string> apiKey, std::optional<std::string> appGroupId);

  BrellixPushSDKBuilder& crash();
  BrellixPushSDKBuilder& push();
  /// The same as customNotificationHandling().
  BrellixPushSDKBuilder& custom();
  BrellixPushSDKBuilder& customNotificationHandling();
  BrellixPushSDKBuilder& analytics(bool enabled);

  /// Makes the configuration, which names the application group and writes its switches.
  [[nodiscard]] std::shared_ptr<BrellixPushSDKConfig> build() const;

 private:
  std::shared_ptr<VorselKelp::CoreContext> context_;
  std::string _apiKey;
  std::optional<std::string> _appGroupId;
  BrellixPushSDKSwitches switches_;
  bool _schedulerEnabled = false;
  bool _consent = false;
};

}  // namespace BrellixPush
