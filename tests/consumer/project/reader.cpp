// An application on the core: it starts, and its service extension prepares a push, all on a device in
// memory.

#include "Delivery.h"
#include "VorselKelp/VorselKellp.h"

using VorselKelp::VorselBuilder;
using VorselKelp::VorselKellp;

int main() {
  const auto device = delivery::makeDevice();
  delivery::MemoryPlatform application(device);
  VorselKellp::install(application.platform());
  VorselKellp::initialize(VorselBuilder("k-123", delivery::group).push().build());
  delivery::settle(application);
  std::printf("initialised: %s\n", VorselKellp::isInitialised() ? "yes" : "no");

  delivery::MemoryPlatform extension(device, VorselKelp::testing_platform::ProcessKind::extension,
                                     "com.example.app.service");
  VorselKellp::install(extension.platform());
  VorselKellp::setValueFor(delivery::group);
  const auto request = delivery::request();
  VorselKellp::didReceiveNotification(
      request, std::make_shared<VorselKelp::platform::NotificationContent>(request.content),
      [](const auto& content) { delivery::reportPrepared(*content); });
  delivery::settle(extension);
  delivery::report(extension);
  VorselKellp::uninstall();
}
