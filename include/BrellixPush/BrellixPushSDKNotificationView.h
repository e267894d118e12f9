#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/VorselNotificationView.h"

namespace BrellixPush {

/// The carousel under the facade's name: a view for the publisher's content extension to place, filled by the
/// core's view. Main thread.
class VORSELKELP_API BrellixPushSDKNotificationView : public VorselKelp::ui::View {
 public:
  /// Never null. Empties the controller's view, as the core's view does; adding this one there is the
  /// caller's. Stops the process where the core's view does, and for a controller without a view.
  static std::shared_ptr<BrellixPushSDKNotificationView> make(
      const VorselKelp::platform::DeliveredNotification& notification,
      const std::shared_ptr<VorselKelp::ui::ViewController>& viewController);
  [[noreturn]] explicit BrellixPushSDKNotificationView(const VorselKelp::ui::Coder& coder);

  [[nodiscard]] const std::shared_ptr<VorselKelp::VorselNotificationView>& customView() const {
    return customView_;
  }

 private:
  explicit BrellixPushSDKNotificationView(VorselKelp::ui::Rect frame);

  std::shared_ptr<VorselKelp::VorselNotificationView> customView_;
};

}  // namespace BrellixPush
