#include "facade/StorageManager.h"

namespace BrellixPush {
namespace {

constexpr const char* crashKey = "bx_crash";
constexpr const char* analyticsKey = "bx_analytics";
constexpr const char* pushKey = "bx_push";
constexpr const char* geofenceKey = "bx_geofence";
constexpr const char* beaconKey = "bx_beacom";  // as installations carry it
constexpr const char* customKey = "bx_custom";
constexpr const char* locationKey = "bx_location";

}  // namespace

StorageManager::StorageManager(VorselKelp::platform::UserDefaults& defaults, const std::string& suiteName)
    : defaultStorage_(defaults.suite(suiteName)) {}

void StorageManager::write(const BrellixPushSDKSwitches& switches) {
  if (!defaultStorage_) return;
  defaultStorage_->transact([&] {
    write(crashKey, switches.crash);
    write(analyticsKey, switches.analytics);
    write(pushKey, switches.push);
    write(geofenceKey, switches.geofence);
    write(beaconKey, switches.beacon);
    write(customKey, switches.custom);
    write(locationKey, switches.location);
  });
}

void StorageManager::write(const char* key, std::optional<bool> value) {
  if (!value) return;
  defaultStorage_->setObject(key, {*value});
  defaultStorage_->synchronize();
}

bool StorageManager::read(const char* key) const {
  const auto stored = defaultStorage_ ? defaultStorage_->object(key) : std::nullopt;
  const bool* value = stored ? stored->as<bool>() : nullptr;
  return value && *value;
}

BrellixPushSDKSwitches StorageManager::read() const {
  return {read(crashKey),  read(analyticsKey), read(pushKey),    read(geofenceKey),
          read(beaconKey), read(customKey),    read(locationKey)};
}

}  // namespace BrellixPush
