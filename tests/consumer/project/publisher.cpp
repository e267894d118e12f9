// The same application through the publisher facade.

#include "BrellixPush/BrellixPushSDK.h"
#include "Delivery.h"

using BrellixPush::BrellixPushSDK;
using BrellixPush::BrellixPushSDKBuilder;
using VorselKelp::VorselKellp;

int main() {
  const auto device = delivery::makeDevice();
  delivery::MemoryPlatform application(device);
  VorselKellp::install(application.platform());
  BrellixPushSDK::initialize(BrellixPushSDKBuilder("k-123", delivery::group).push().build());
  delivery::settle(application);
  std::printf("initialised: %s\n", VorselKellp::isInitialised() ? "yes" : "no");

  delivery::MemoryPlatform extension(device, VorselKelp::testing_platform::ProcessKind::extension,
                                     "com.example.app.service");
  VorselKellp::install(extension.platform());
  BrellixPushSDK::setValueFor(delivery::group);
  const auto request = delivery::request();
  BrellixPushSDK::didReceiveNotification(
      request, std::make_shared<VorselKelp::platform::NotificationContent>(request.content),
      [](const auto& content) { delivery::reportPrepared(*content); });
  delivery::settle(extension);
  delivery::report(extension);
  VorselKellp::uninstall();
}
