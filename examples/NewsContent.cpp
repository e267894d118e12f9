#include "NewsContent.h"

#include "BrellixPush/BrellixPushSDK.h"
#include "BrellixPush/BrellixPushSDKNotificationView.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelp/VorselNotificationView.h"

namespace news {
namespace {

using namespace VorselKelp;
using BrellixPush::BrellixPushSDK;
using BrellixPush::BrellixPushSDKNotificationView;

/// The extension's only screen.
class NewsContentController final : public ui::ViewController, public platform::NotificationContentExtension {
 public:
  NewsContentController(std::shared_ptr<platform::ExtensionContext> context, bool facade)
      : context_(std::move(context)), facade_(facade) {}

  void viewDidLoad() override { view()->backgroundColor = ui::Color::white(); }

  void didReceive(const platform::DeliveredNotification& notification) override {
    if (facade_) {
      const auto area = BrellixPushSDKNotificationView::make(notification, shared_from_this());
      view()->addSubview(area);
      carousel_ = area->customView();
    } else {
      carousel_ = VorselNotificationView::make(notification, shared_from_this());
    }
  }

  void didReceive(const platform::NotificationResponse& response) override {
    if (carousel_) carousel_->handleNotificationAction(response);
  }

  std::shared_ptr<platform::ExtensionContext> extensionContext() override { return context_; }

 private:
  const std::shared_ptr<platform::ExtensionContext> context_;
  const bool facade_;
  std::shared_ptr<VorselNotificationView> carousel_;
};

}  // namespace

void NewsContent::willStart(const simulator::Manifest& manifest) {
  facade_ = manifest.layer == simulator::Manifest::Layer::facade;
  const auto group = manifest.appGroupId.value_or("");
  if (facade_) {
    BrellixPushSDK::setValueFor(group);
  } else {
    VorselKellp::setValueFor(group);
  }
}

ui::Size NewsContent::preferredContentSize(const platform::DeliveredNotification& notification) {
  return facade_ ? BrellixPushSDK::getPreferedContentSize(notification)
                 : VorselKellp::getPreferedContentSize(notification);
}

std::shared_ptr<ui::ViewController> NewsContent::makeController(
    std::shared_ptr<platform::ExtensionContext> context) {
  return std::make_shared<NewsContentController>(std::move(context), facade_);
}

}  // namespace news
