#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "BrellixPush/BrellixPushSDKDelegate.h"
#include "VorselKelp/VorselKellpDelegate.h"
#include "core/CoreContext.h"
#include "facade/BrellixEventTracker.h"

namespace BrellixPush {

/// What the facade keeps for one core. Any thread.
class Facade {
 public:
  /// The facade of a core, made at the first call.
  static std::shared_ptr<Facade> of(VorselKelp::CoreContext& context);

  [[nodiscard]] std::shared_ptr<BrellixPushSDKDelegate> delegate() const;
  void setDelegate(std::weak_ptr<BrellixPushSDKDelegate> delegate);

  /// The core holds its delegate weakly: the bridge lives here.
  void keepBridge(std::shared_ptr<VorselKelp::VorselKellpDelegate> bridge);

  [[nodiscard]] std::shared_ptr<BrellixEventTracker> tracker() const;
  void setTracker(std::shared_ptr<BrellixEventTracker> tracker);

  [[nodiscard]] std::string appGroupSetting() const;
  void setAppGroupSetting(std::string group);

 private:
  mutable std::mutex mutex_;
  std::weak_ptr<BrellixPushSDKDelegate> delegate_;
  std::shared_ptr<VorselKelp::VorselKellpDelegate> bridge_;
  std::shared_ptr<BrellixEventTracker> tracker_;
  std::string appGroupSetting_;
};

/// Names the group to the facade and to the core when the device knows it; blanks alone name none.
void nameAppGroup(VorselKelp::CoreContext& context, const std::string& appGroupId);

}  // namespace BrellixPush
