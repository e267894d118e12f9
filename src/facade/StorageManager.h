#pragma once

#include <memory>
#include <optional>
#include <string>

#include "BrellixPush/BrellixPushSDKConfig.h"
#include "VorselKelp/platform/UserDefaults.h"

namespace BrellixPush {

/// The facade's own switches, in the suite that was named when the configuration was made. Without a domain
/// nothing is written and every switch reads as false.
class StorageManager {
 public:
  StorageManager(VorselKelp::platform::UserDefaults& defaults, const std::string& suiteName);

  /// Writes each switch that is present, in a fixed order.
  void write(const BrellixPushSDKSwitches& switches);
  [[nodiscard]] BrellixPushSDKSwitches read() const;

 private:
  void write(const char* key, std::optional<bool> value);
  [[nodiscard]] bool read(const char* key) const;

  std::shared_ptr<VorselKelp::platform::DefaultsDomain> defaultStorage_;
};

}  // namespace BrellixPush
