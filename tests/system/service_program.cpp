// A service extension as an application ships it. Its first argument is the folder that all of it lies in.

#include <cstdio>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ServiceMain.h"

namespace {

using namespace VorselKelp;

constexpr const char* group = "group.com.example.reader";

class ReaderService final : public system::ServiceExtension {
 public:
  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    VorselKellp::setValueFor(group);
    std::puts("printed by the extension");
    VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
  }
  void serviceExtensionTimeWillExpire() override {}
};

}  // namespace

int main(int argc, char** argv) {
  const std::string folder = argc > 1 ? argv[1] : "/nowhere";
  system::ServiceDescription description;
  description.application = "com.example.reader";
  description.version = "1.0";
  description.groups = {group};
  description.groupContainers = folder + "/groups";
  description.container = folder + "/service";
  description.notifications = folder + "/notifications";
  ReaderService service;
  return system::runServiceMain(argc - 1, argv + 1, description, service);
}
