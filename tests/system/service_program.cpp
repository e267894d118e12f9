// A service extension as an application ships it. Its first argument is the folder that all of it lies in.

#include <stdlib.h>

#include <cstdio>

#include "VorselKelp/VorselBuilder.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSystem/ServiceMain.h"

namespace {

using namespace VorselKelp;

constexpr const char* group = "group.com.example.reader";

class ReaderService final : public system::ServiceExtension {
 public:
  void didReceive(const platform::NotificationRequest& request,
                  std::shared_ptr<platform::NotificationContent> best, ContentHandler handler) override {
    // Stops the process unless its property list has the key.
    const VorselBuilder builder(std::nullopt, group);
    VorselKellp::setValueFor(group);
    std::puts("printed by the extension");
    VorselKellp::didReceiveNotification(request, std::move(best), std::move(handler));
  }
  void serviceExtensionTimeWillExpire() override {}
};

}  // namespace

int main(int argc, char** argv) {
  ::setenv("XDG_DATA_HOME", argc > 1 ? argv[1] : "/nowhere", 1);
  ::setenv("XDG_CACHE_HOME", argc > 1 ? argv[1] : "/nowhere", 1);
  const auto description = system::parseDescription(
      R"({"bundleIdentifier": "com.example.reader", "appGroupId": "group.com.example.reader",
          "properties": {"VorselKellpApiKey": "k"}})");
  ReaderService service;
  return system::runServiceMain(argc - 1, argv + 1, system::serviceDescriptionOf(*description), service);
}
