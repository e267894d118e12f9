#include "VorselKelp/VorselConfig.h"

#include <utility>

#include "core/CoreContext.h"

namespace VorselKelp {
namespace {

void persist(CoreContext& context, StorageKey key, std::optional<bool> value) {
  if (!value) return;  // whatever an earlier launch wrote stays
  context.storage.set(key, *value);
  context.storage.synchronize();
}

}  // namespace

VorselConfig::VorselConfig(std::string apiKey, std::optional<std::string> appGroupId,
                           std::optional<bool> crash, bool analytics, std::optional<bool> push,
                           std::optional<bool> geofence, std::optional<bool> beacon,
                           std::optional<bool> custom, std::optional<bool> location, bool scheduleValue,
                           bool adexValue, bool consentValue)
    : schedule(scheduleValue),
      adex(adexValue),
      consent(consentValue),
      context_(CoreContext::current("VorselConfig")),
      _apiKey(std::move(apiKey)),
      _appGroupId(std::move(appGroupId)) {
  context_->storage.transact([&] {
    setCrash(crash);
    setAnalytics(analytics);
    setPush(push);
    setGeofence(geofence);
    setBeacon(beacon);
    setCustom(custom);
    setLocation(location);
  });
}

void VorselConfig::setCrash(std::optional<bool> value) {
  _crash = value;
  persist(*context_, StorageKey::crash, value);
}

void VorselConfig::setAnalytics(bool value) {
  _analytics = value;
  persist(*context_, StorageKey::analytics, value);
}

void VorselConfig::setPush(std::optional<bool> value) {
  _push = value;
  persist(*context_, StorageKey::push, value);
}

void VorselConfig::setGeofence(std::optional<bool> value) {
  _geofence = value;
  persist(*context_, StorageKey::geofence, value);
}

void VorselConfig::setBeacon(std::optional<bool> value) {
  _beacon = value;
  persist(*context_, StorageKey::beacon, value);
}

void VorselConfig::setCustom(std::optional<bool> value) {
  _custom = value;
  persist(*context_, StorageKey::custom, value);
}

void VorselConfig::setLocation(std::optional<bool> value) {
  _location = value;
  persist(*context_, StorageKey::location, value);
}

}  // namespace VorselKelp
