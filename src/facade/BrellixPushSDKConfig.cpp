#include "BrellixPush/BrellixPushSDKConfig.h"

#include <utility>

#include "core/CoreContext.h"
#include "facade/Facade.h"
#include "facade/StorageManager.h"

namespace BrellixPush {

BrellixPushSDKConfig::BrellixPushSDKConfig(std::shared_ptr<VorselKelp::CoreContext> context,
                                           std::string apiKey, std::optional<std::string> appGroupId,
                                           const BrellixPushSDKSwitches& switches, bool schedule,
                                           bool consent)
    : storeManager_(std::make_shared<StorageManager>(*context->services->userDefaults,
                                                     Facade::of(*context)->appGroupSetting())),
      _apiKey(std::move(apiKey)),
      _appGroupId(std::move(appGroupId)),
      switches_(switches) {
  nameAppGroup(*context, _appGroupId.value_or(""));
  schedule_ = schedule;
  consent_ = consent;
  storeManager_->write(switches);
}

BrellixPushSDKSwitches BrellixPushSDKConfig::storedSwitches() const {
  return storeManager_->read();
}

}  // namespace BrellixPush
