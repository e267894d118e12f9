#include "VorselKelpFreedesktop/BluezLocation.h"

#include <utility>

#include "bluez/BeaconHub.h"
#include "bluez/BeaconManager.h"

namespace VorselKelp::freedesktop {
namespace {

class BluezLocation final : public platform::LocationServices {
 public:
  explicit BluezLocation(std::shared_ptr<BeaconHub> hub) : hub_(std::move(hub)) {}
  std::shared_ptr<platform::LocationManager> makeLocationManager() override {
    return std::make_shared<BeaconManager>(hub_);
  }

 private:
  const std::shared_ptr<BeaconHub> hub_;
};

}  // namespace

std::shared_ptr<platform::LocationServices> makeBluezLocation(std::shared_ptr<platform::MainQueue> mainQueue,
                                                              std::string busAddress) {
  return std::make_shared<BluezLocation>(
      std::make_shared<BeaconHub>(std::move(mainQueue), std::move(busAddress)));
}

}  // namespace VorselKelp::freedesktop
