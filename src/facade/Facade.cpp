#include "facade/Facade.h"

#include <utility>

#include "base/Text.h"

namespace BrellixPush {

std::shared_ptr<Facade> Facade::of(VorselKelp::CoreContext& context) {
  return context.companion<Facade>([] { return std::make_shared<Facade>(); });
}

std::shared_ptr<BrellixPushSDKDelegate> Facade::delegate() const {
  const std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void Facade::setDelegate(std::weak_ptr<BrellixPushSDKDelegate> delegate) {
  const std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

void Facade::keepBridge(std::shared_ptr<VorselKelp::VorselKellpDelegate> bridge) {
  const std::lock_guard lock(mutex_);
  bridge_.swap(bridge);
}

std::shared_ptr<BrellixEventTracker> Facade::tracker() const {
  const std::lock_guard lock(mutex_);
  return tracker_;
}

void Facade::setTracker(std::shared_ptr<BrellixEventTracker> tracker) {
  const std::lock_guard lock(mutex_);
  tracker_.swap(tracker);
}

std::string Facade::appGroupSetting() const {
  const std::lock_guard lock(mutex_);
  return appGroupSetting_;
}

void Facade::setAppGroupSetting(std::string group) {
  const std::lock_guard lock(mutex_);
  appGroupSetting_ = std::move(group);
}

void nameAppGroup(VorselKelp::CoreContext& context, const std::string& appGroupId) {
  if (VorselKelp::trimmed(appGroupId).empty()) return;
  if (!context.services->fileManager->containerPath(appGroupId)) return;
  context.state.setAppGroupSetting(appGroupId);
  Facade::of(context)->setAppGroupSetting(appGroupId);
}

}  // namespace BrellixPush
