#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"

namespace BrellixPush {

class StorageManager;

/// The switches that the publisher chose. An absent switch leaves what an earlier launch stored.
struct BrellixPushSDKSwitches {
  std::optional<bool> crash;
  bool analytics = true;
  std::optional<bool> push;
  std::optional<bool> geofence;
  std::optional<bool> beacon;
  std::optional<bool> custom;
  std::optional<bool> location;
};

/// A built configuration. Made by BrellixPushSDKBuilder, which writes its switches into the facade's store.
class VORSELKELP_API BrellixPushSDKConfig {
 public:
  BrellixPushSDKConfig(std::string apiKey, std::optional<std::string> appGroupId,
                       const BrellixPushSDKSwitches& switches, bool schedule, bool consent);

  [[nodiscard]] const std::string& apiKey() const { return _apiKey; }
  [[nodiscard]] const std::optional<std::string>& appGroupId() const { return _appGroupId; }
  [[nodiscard]] bool schedule() const { return schedule_; }
  [[nodiscard]] bool consent() const { return consent_; }
  // The switches as they were chosen.
  [[nodiscard]] std::optional<bool> crash() const { return switches_.crash; }
  [[nodiscard]] bool analytics() const { return switches_.analytics; }
  [[nodiscard]] std::optional<bool> push() const { return switches_.push; }
  [[nodiscard]] std::optional<bool> geofence() const { return switches_.geofence; }
  [[nodiscard]] std::optional<bool> beacon() const { return switches_.beacon; }
  [[nodiscard]] std::optional<bool> custom() const { return switches_.custom; }
  [[nodiscard]] std::optional<bool> location() const { return switches_.location; }
  /// The switches as the facade's store holds them now, absent ones false.
  [[nodiscard]] BrellixPushSDKSwitches storedSwitches() const;

 private:
  std::shared_ptr<StorageManager> storeManager_;
  bool schedule_ = false;
  bool consent_ = false;
  std::string _apiKey;
  std::optional<std::string> _appGroupId;
  BrellixPushSDKSwitches switches_;
};

}  // namespace BrellixPush
