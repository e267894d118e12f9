// The news application's notification-service extension: a process of its own that lets the library prepare
// each notification before it is shown.

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpLinux/ServiceExtensionHost.h"

namespace {

using namespace VorselKelp;

class NewsService final : public linux_platform::ServiceExtension {
 public:
  void willStart(const linux_platform::Manifest& manifest) override {
    VorselKellp::setValueFor(manifest.appGroupId.value_or(""));
  }

  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    userInfo_ = request.content.userInfo;
    best_ = best;
    handler_ = handler;
    VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
  }

  void serviceExtensionTimeWillExpire() override {
    VorselKellp::notificationBuilderWillTerminate(userInfo_, best_, handler_);
  }

 private:
  platform::UserInfo userInfo_;
  std::shared_ptr<platform::NotificationContent> best_;
  ContentHandler handler_;
};

}  // namespace

int main(int argc, char** argv) {
  NewsService service;
  return linux_platform::runServiceExtension(argc, argv, service);
}
