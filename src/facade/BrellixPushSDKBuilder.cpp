#include "BrellixPush/BrellixPushSDKBuilder.h"

#include <utility>

#include "core/CoreContext.h"
#include "core/CoreScope.h"
#include "core/PropertyList.h"
#include "facade/Facade.h"

namespace BrellixPush {

BrellixPushSDKBuilder::BrellixPushSDKBuilder(std::optional<std::string> apiKey,
                                             std::optional<std::string> appGroupId)
    : context_(VorselKelp::CoreContext::current("BrellixPushSDKBuilder")) {
  if (appGroupId) Facade::of(*context_)->setAppGroupSetting(*appGroupId);
  _apiKey = apiKey ? *std::move(apiKey) : VorselKelp::requiredApiKey(*context_, "BrellixPushSDKBuilder");
  _appGroupId = std::move(appGroupId);
}

BrellixPushSDKBuilder& BrellixPushSDKBuilder::crash() {
  switches_.crash = true;
  return *this;
}

BrellixPushSDKBuilder& BrellixPushSDKBuilder::push() {
  switches_.push = true;
  return *this;
}

BrellixPushSDKBuilder& BrellixPushSDKBuilder::custom() {
  return customNotificationHandling();
}

BrellixPushSDKBuilder& BrellixPushSDKBuilder::customNotificationHandling() {
  switches_.custom = true;
  return *this;
}

BrellixPushSDKBuilder& BrellixPushSDKBuilder::analytics(bool enabled) {
  switches_.analytics = enabled;
  return *this;
}

std::shared_ptr<BrellixPushSDKConfig> BrellixPushSDKBuilder::build() const {
  Facade::of(*context_)->setAppGroupSetting(_appGroupId.value_or(""));
  const VorselKelp::CoreScope scope(context_);
  return std::make_shared<BrellixPushSDKConfig>(_apiKey, _appGroupId, switches_, _schedulerEnabled, _consent);
}

}  // namespace BrellixPush
