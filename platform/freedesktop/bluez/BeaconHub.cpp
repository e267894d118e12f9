#include "bluez/BeaconHub.h"

#include <algorithm>
#include <utility>

#include "bluez/BeaconManager.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr double beatSeconds = 1;
constexpr long absentAfterBeats = 30;

}  // namespace

BeaconHub::BeaconHub(std::shared_ptr<platform::MainQueue> mainQueue, std::string busAddress)
    : mainQueue_(std::move(mainQueue)), busAddress_(std::move(busAddress)) {}

void BeaconHub::join(const std::shared_ptr<BeaconManager>& manager) {
  managers_.push_back(manager);
  if (scanner_) return;
  scanner_ =
      std::make_shared<BluezScanner>(std::make_shared<Connection>(BusKind::system, busAddress_, mainQueue_),
                                     [weak = weak_from_this()](const platform::Beacon& beacon) {
                                       if (const auto self = weak.lock()) self->seen(beacon);
                                     });
  scanner_->start();
  scheduleBeat();
}

bool BeaconHub::present(const std::string& proximityUUID) const {
  const auto found = heard_.find(proximityUUID);
  // The beat under way when it was heard was not a whole second.
  return found != heard_.end() && beats_ - found->second <= absentAfterBeats;
}

void BeaconHub::seen(const platform::Beacon& beacon) {
  const auto listeners = managers();
  const auto watches = [&](const auto& manager) { return manager->watches(beacon.proximityUUID); };
  if (std::none_of(listeners.begin(), listeners.end(), watches)) return;
  heard_.insert_or_assign(beacon.proximityUUID, beats_);
  for (const auto& manager : listeners) manager->seen(beacon);
}

void BeaconHub::scheduleBeat() {
  mainQueue_->asyncAfter(beatSeconds, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->beat();
  });
}

void BeaconHub::beat() {
  const auto listeners = managers();
  if (listeners.empty()) {
    scanner_.reset();
    heard_.clear();
    return;
  }
  ++beats_;
  scheduleBeat();
  for (const auto& manager : listeners) manager->beat();
}

std::vector<std::shared_ptr<BeaconManager>> BeaconHub::managers() {
  std::vector<std::shared_ptr<BeaconManager>> living;
  std::erase_if(managers_, [&](const auto& weak) {
    auto manager = weak.lock();
    if (!manager) return true;
    living.push_back(std::move(manager));
    return false;
  });
  return living;
}

}  // namespace VorselKelp::freedesktop
