// vorsel-push-service: the service extension of an application that has none of its own. Its first argument
// is the application's description.

#include <cstdio>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ServiceMain.h"

using namespace VorselKelp;

namespace {

class PushService final : public system::ServiceExtension {
 public:
  explicit PushService(std::string group) : group_(std::move(group)) {}

  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    VorselKellp::setValueFor(group_);
    request_ = request;
    best_ = best;
    handler_ = handler;
    VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
  }

  void serviceExtensionTimeWillExpire() override {
    VorselKellp::notificationBuilderWillTerminate(request_.content.userInfo, best_, handler_);
  }

 private:
  const std::string group_;
  platform::NotificationRequest request_;
  std::shared_ptr<platform::NotificationContent> best_;
  ContentHandler handler_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("Usage: vorsel-push-service DESCRIPTION [--id ID] [--time-limit SECONDS]\n", stderr);
    return 2;
  }
  const auto description = system::loadDescription(argv[1]);
  if (!description) {
    std::fprintf(stderr, "%s\n", description.error().description.c_str());
    return 2;
  }
  PushService service(description->appGroupId.value_or(""));
  return system::runServiceMain(argc - 1, argv + 1, system::serviceDescriptionOf(*description), service);
}
