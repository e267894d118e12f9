// The news application's notification-service extension: a process of its own that lets the library prepare
// each notification before it is shown.

#include "BrellixPush/BrellixPushSDK.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSimulator/ServiceExtensionHost.h"

namespace {

using namespace VorselKelp;
using BrellixPush::BrellixPushSDK;

class NewsService final : public simulator::ServiceExtension {
 public:
  void willStart(const simulator::Manifest& manifest) override {
    facade_ = manifest.layer == simulator::Manifest::Layer::facade;
    const auto group = manifest.appGroupId.value_or("");
    if (facade_) {
      BrellixPushSDK::setValueFor(group);
    } else {
      VorselKellp::setValueFor(group);
    }
  }

  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    userInfo_ = request.content.userInfo;
    best_ = best;
    handler_ = handler;
    if (facade_) {
      BrellixPushSDK::increseNotificationCount(best);
      BrellixPushSDK::didReceiveNotification(request, std::move(best), std::move(handler));
    } else {
      VorselKellp::addNotificationCount(best);
      VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
    }
  }

  void serviceExtensionTimeWillExpire() override {
    if (facade_) {
      BrellixPushSDK::notificationBuilderWillTerminate(userInfo_, best_, handler_);
    } else {
      VorselKellp::notificationBuilderWillTerminate(userInfo_, best_, handler_);
    }
  }

 private:
  bool facade_ = false;
  platform::UserInfo userInfo_;
  std::shared_ptr<platform::NotificationContent> best_;
  ContentHandler handler_;
};

}  // namespace

int main(int argc, char** argv) {
  NewsService service;
  return simulator::runServiceExtension(argc, argv, service);
}
