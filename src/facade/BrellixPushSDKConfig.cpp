#include "BrellixPush/BrellixPushSDKConfig.h"

#include <utility>

#include "core/CoreContext.h"
#include "facade/Facade.h"
#include "facade/StorageManager.h"

namespace BrellixPush {

namespace {

std::shared_ptr<StorageManager> storeOf(VorselKelp::CoreContext& context) {
  return std::make_shared<StorageManager>(*context.services->userDefaults,
                                          Facade::of(context)->appGroupSetting());
}

}  // namespace

BrellixPushSDKConfig::BrellixPushSDKConfig(std::string apiKey, std::optional<std::string> appGroupId,
                                           const BrellixPushSDKSwitches& switches, bool schedule,
                                           bool consent)
    : _apiKey(std::move(apiKey)), _appGroupId(std::move(appGroupId)), switches_(switches) {
  const auto context = VorselKelp::CoreContext::current("BrellixPushSDKConfig");
  storeManager_ = storeOf(*context);
  nameAppGroup(*context, _appGroupId.value_or(""));
  schedule_ = schedule;
  consent_ = consent;
  storeManager_->write(switches);
}

BrellixPushSDKSwitches BrellixPushSDKConfig::storedSwitches() const {
  return storeManager_->read();
}

}  // namespace BrellixPush
