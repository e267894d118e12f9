#include "bluez/BeaconManager.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::freedesktop {
namespace {

using platform::Beacon;
using platform::Region;
using platform::RegionState;

constexpr int patienceBeats = 5;          // until a region without beacons is known to have none
constexpr std::size_t mostBeacons = 100;  // told in one second

/// A region that was watched before keeps what is known of it.
template <class Entry>
void watch(std::map<std::string, Entry>& entries, const Region& region) {
  auto& entry = entries[region.identifier];
  if (entry.region != region) entry = Entry{region, {}};
}

template <class Entry>
bool anyOf(const std::map<std::string, Entry>& entries, const std::string& proximityUUID) {
  return std::any_of(entries.begin(), entries.end(),
                     [&](const auto& entry) { return entry.second.region.proximityUUID == proximityUUID; });
}

}  // namespace

void BeaconManager::setDelegate(std::weak_ptr<platform::LocationManagerDelegate> delegate) {
  later([delegate = std::move(delegate)](BeaconManager& self) { self.delegate_ = delegate; });
}

void BeaconManager::startMonitoring(const Region& region) {
  later([region](BeaconManager& self) {
    watch(self.monitored_, region);
    self.join();
  });
}

void BeaconManager::startRangingBeacons(const Region& region) {
  later([region](BeaconManager& self) {
    watch(self.ranged_, region);
    self.join();
  });
}

void BeaconManager::requestState(const Region& region) {
  later([region](BeaconManager& self) {
    if (!region.proximityUUID) return self.determine(RegionState::unknown, region);
    if (self.hub_->present(*region.proximityUUID)) {
      self.arrived(*region.proximityUUID);
      return self.determine(RegionState::inside, region);
    }
    self.asked_.insert_or_assign(region.identifier, Asked{region, 0});
    self.join();
  });
}

bool BeaconManager::watches(const std::string& proximityUUID) const {
  return anyOf(monitored_, proximityUUID) || anyOf(ranged_, proximityUUID) || anyOf(asked_, proximityUUID);
}

void BeaconManager::seen(const Beacon& beacon) {
  const auto listener = delegate_.lock();
  const auto entered = arrived(beacon.proximityUUID);
  // Whoever has just asked where the device is hears that it is inside, and not that it came.
  if (listener && !anyOf(asked_, beacon.proximityUUID)) {
    for (const auto& region : entered) listener->didEnterRegion(region);
  }
  for (auto& [identifier, ranged] : ranged_) note(ranged, beacon);
  std::erase_if(asked_, [&](const auto& entry) {
    const auto& region = entry.second.region;
    if (region.proximityUUID != beacon.proximityUUID) return false;
    if (listener) listener->didDetermineState(RegionState::inside, region);
    return true;
  });
}

std::vector<Region> BeaconManager::arrived(const std::string& proximityUUID) {
  std::vector<Region> entered;
  for (auto& [identifier, entry] : monitored_) {
    if (entry.region.proximityUUID != proximityUUID || std::exchange(entry.inside, true)) continue;
    entered.push_back(entry.region);
  }
  return entered;
}

void BeaconManager::beat() {
  const auto listener = delegate_.lock();
  for (auto& [identifier, entry] : monitored_) {
    if (!entry.inside || hub_->present(entry.region.proximityUUID.value_or(""))) continue;
    entry.inside = false;
    if (listener) listener->didExitRegion(entry.region);
  }
  for (auto& [identifier, ranged] : ranged_) {
    const auto beacons = std::exchange(ranged.beacons, {});
    if (listener && ranged.region.proximityUUID) listener->didRangeBeacons(beacons, ranged.region);
  }
  for (auto& [identifier, entry] : asked_) {
    if (++entry.beats < patienceBeats) continue;
    determine(hub_->scanning() ? RegionState::outside : RegionState::unknown, entry.region);
  }
  std::erase_if(asked_, [](const auto& entry) { return entry.second.beats >= patienceBeats; });
}

void BeaconManager::later(platform::UniqueFunction<void(BeaconManager&)> work) {
  hub_->post([weak = weak_from_this(), work = std::move(work)]() mutable {
    if (const auto self = weak.lock()) work(*self);
  });
}

void BeaconManager::join() {
  if (!std::exchange(joined_, true)) hub_->join(shared_from_this());
}

void BeaconManager::determine(RegionState state, const Region& region) {
  if (const auto listener = delegate_.lock()) listener->didDetermineState(state, region);
}

void BeaconManager::note(Ranged& ranged, const Beacon& beacon) const {
  if (ranged.region.proximityUUID != beacon.proximityUUID || ranged.beacons.size() >= mostBeacons) return;
  const auto same = [&](const Beacon& other) {
    return other.major == beacon.major && other.minor == beacon.minor;
  };
  if (std::none_of(ranged.beacons.begin(), ranged.beacons.end(), same)) ranged.beacons.push_back(beacon);
}

}  // namespace VorselKelp::freedesktop
