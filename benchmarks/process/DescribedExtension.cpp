// A service extension made from a description, the file that its first argument names.

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ServiceMain.h"

namespace {

using namespace VorselKelp;

class Service final : public system::ServiceExtension {
 public:
  explicit Service(std::string group) : group_(std::move(group)) {}
  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    VorselKellp::setValueFor(group_);
    VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
  }
  void serviceExtensionTimeWillExpire() override {}

 private:
  const std::string group_;
};

}  // namespace

int main(int argc, char** argv) {
  const auto description = system::loadDescription(argc > 1 ? argv[1] : "");
  if (!description) return 2;
  Service service(description->appGroupId.value_or(""));
  return system::runServiceMain(argc - 1, argv + 1, system::serviceDescriptionOf(*description), service);
}
