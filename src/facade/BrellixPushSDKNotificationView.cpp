#include "BrellixPush/BrellixPushSDKNotificationView.h"

#include "base/FatalError.h"

namespace BrellixPush {

using VorselKelp::fatalError;
using VorselKelp::VorselNotificationView;

std::shared_ptr<BrellixPushSDKNotificationView> BrellixPushSDKNotificationView::make(
    const VorselKelp::platform::DeliveredNotification& notification,
    const std::shared_ptr<VorselKelp::ui::ViewController>& viewController) {
  const auto parent = viewController ? viewController->view() : nullptr;
  if (!parent) fatalError("BrellixPushSDKNotificationView: there is no view controller, or it has no view");
  const std::shared_ptr<BrellixPushSDKNotificationView> view(
      new BrellixPushSDKNotificationView(parent->frame));
  const auto custom = VorselNotificationView::make(notification, viewController);
  view->customView_ = custom;
  custom->translatesAutoresizingMaskIntoConstraints = false;
  view->addSubview(custom);
  view->activate(VorselKelp::ui::pinnedEdges(custom, view));
  return view;
}

BrellixPushSDKNotificationView::BrellixPushSDKNotificationView(const VorselKelp::ui::Coder&) {
  fatalError("init(coder:) has not been implemented");
}

BrellixPushSDKNotificationView::BrellixPushSDKNotificationView(VorselKelp::ui::Rect frame_) : View(frame_) {}

}  // namespace BrellixPush
