#include "VorselKelp/VorselBuilder.h"

#include <utility>

#include "base/FatalError.h"
#include "core/CoreContext.h"
#include "core/CoreScope.h"
#include "core/PropertyList.h"

namespace VorselKelp {
VorselBuilder::VorselBuilder(std::optional<std::string> apiKey, std::optional<std::string> appGroupId)
    : context_(CoreContext::current("VorselBuilder")) {
  context_->state.setAppGroupSetting(appGroupId.value_or(""));
  _apiKey = apiKey ? *std::move(apiKey) : requiredApiKey(*context_, "VorselBuilder");
  _appGroupId = std::move(appGroupId);
}

VorselBuilder::VorselBuilder() {
  fatalError("VorselBuilder: init() has not been implemented");
}

VorselBuilder& VorselBuilder::crash() {
  _crash = true;
  return *this;
}

VorselBuilder& VorselBuilder::adex() {
  _adex = true;
  return *this;
}

VorselBuilder& VorselBuilder::push() {
  _push = true;
  return *this;
}

VorselBuilder& VorselBuilder::custom() {
  return customNotificationHandling();
}

VorselBuilder& VorselBuilder::customNotificationHandling() {
  _custom = true;
  return *this;
}

VorselBuilder& VorselBuilder::analytics(bool enabled) {
  _analytics = enabled;
  return *this;
}

VorselBuilder& VorselBuilder::geofence(bool enabled) {
  _geofence = enabled;
  return *this;
}

VorselBuilder& VorselBuilder::beacon(bool enabled) {
  _beacon = enabled;
  return *this;
}

VorselBuilder& VorselBuilder::locationTracking(bool enabled) {
  _location = enabled;
  return *this;
}

VorselBuilder& VorselBuilder::scheduleNotifications(double interval) {
  _schedulerEnabled = true;
  context_->storage.set(StorageKey::schedulerInterval, interval);
  context_->storage.synchronize();
  return *this;
}

std::shared_ptr<VorselConfig> VorselBuilder::build() const {
  const CoreScope scope(context_);
  return std::make_shared<VorselConfig>(_apiKey, _appGroupId, _crash, _analytics, _push, _geofence, _beacon,
                                        _custom, _location, _schedulerEnabled, _adex, _consent);
}

}  // namespace VorselKelp
