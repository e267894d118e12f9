#include "VorselKelpDesktop/BluezLocation.h"

#include <utility>

#include "bus/BeaconHub.h"
#include "bus/BeaconManager.h"

namespace VorselKelp::desktop {
namespace {

class BluezLocation final : public platform::LocationServices {
 public:
  explicit BluezLocation(std::shared_ptr<bus::BeaconHub> hub) : hub_(std::move(hub)) {}
  std::shared_ptr<platform::LocationManager> makeLocationManager() override {
    return std::make_shared<bus::BeaconManager>(hub_);
  }

 private:
  const std::shared_ptr<bus::BeaconHub> hub_;
};

}  // namespace

std::shared_ptr<platform::LocationServices> makeBluezLocation(std::shared_ptr<platform::MainQueue> mainQueue,
                                                              std::string busAddress) {
  return std::make_shared<BluezLocation>(
      std::make_shared<bus::BeaconHub>(std::move(mainQueue), std::move(busAddress)));
}

}  // namespace VorselKelp::desktop
