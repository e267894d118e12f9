#include "VorselKelpSimulator/LocationService.h"

#include <map>
#include <mutex>

namespace VorselKelp::simulator {
namespace {

using platform::Beacon;
using platform::LocationManagerDelegate;
using platform::Region;
using platform::RegionState;

/// What the device knows of where it is. Any thread.
class Surroundings {
 public:
  void note(const BeaconEvent& event) {
    if (event.kind == BeaconEvent::Kind::range) return;
    const std::lock_guard lock(mutex_);
    const bool inside = event.kind != BeaconEvent::Kind::exit;
    states_[event.proximityUUIDs.front()] = inside ? RegionState::inside : RegionState::outside;
  }
  RegionState stateOf(const Region& region) {
    const std::lock_guard lock(mutex_);
    const auto found = states_.find(region.proximityUUID.value_or(""));
    return found == states_.end() ? RegionState::outside : found->second;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, RegionState> states_;
};

class Manager final : public platform::LocationManager, public std::enable_shared_from_this<Manager> {
 public:
  Manager(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<Surroundings> surroundings)
      : mainQueue_(std::move(mainQueue)), surroundings_(std::move(surroundings)) {}

  void setDelegate(std::weak_ptr<LocationManagerDelegate> delegate) override {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
  }
  void requestAlwaysAuthorization() override {}
  void startMonitoring(const Region& region) override { add(monitored_, region); }
  void startRangingBeacons(const Region& region) override { add(ranged_, region); }
  void requestState(const Region& region) override {
    mainQueue_->async([weak = weak_from_this(), region] {
      const auto self = weak.lock();
      const auto delegate = self ? self->delegate() : nullptr;
      if (delegate) delegate->didDetermineState(self->surroundings_->stateOf(region), region);
    });
  }

  bool happen(const BeaconEvent& event) {
    return event.kind == BeaconEvent::Kind::range ? range(event) : cross(event);
  }

 private:
  std::shared_ptr<LocationManagerDelegate> delegate() {
    const std::lock_guard lock(mutex_);
    return delegate_.lock();
  }

  /// A region of the same identifier takes the place of the one before.
  void add(std::map<std::string, Region>& regions, const Region& region) {
    const std::lock_guard lock(mutex_);
    regions.insert_or_assign(region.identifier, region);
  }

  std::vector<Region> copyOf(const std::map<std::string, Region>& regions) {
    const std::lock_guard lock(mutex_);
    std::vector<Region> copies;
    for (const auto& [identifier, region] : regions) copies.push_back(region);
    return copies;
  }

  bool cross(const BeaconEvent& event) {
    bool watched = false;
    for (const auto& region : copyOf(monitored_)) {
      if (region.proximityUUID != event.proximityUUIDs.front()) continue;
      watched = true;
      const auto listener = delegate();
      if (!listener) continue;
      if (event.kind == BeaconEvent::Kind::enter) listener->didEnterRegion(region);
      if (event.kind == BeaconEvent::Kind::exit) listener->didExitRegion(region);
      if (event.kind == BeaconEvent::Kind::inside) listener->didDetermineState(RegionState::inside, region);
    }
    return watched;
  }

  bool range(const BeaconEvent& event) {
    bool watched = false;
    for (const auto& region : copyOf(ranged_)) {
      std::vector<Beacon> beacons;
      for (const auto& uuid : event.proximityUUIDs) {
        if (region.proximityUUID == uuid) beacons.push_back({uuid, 0, 0});
      }
      if (beacons.empty()) continue;
      watched = true;
      if (const auto listener = delegate()) listener->didRangeBeacons(beacons, region);
    }
    return watched;
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Surroundings> surroundings_;
  std::mutex mutex_;
  std::weak_ptr<LocationManagerDelegate> delegate_;
  std::map<std::string, Region> monitored_;
  std::map<std::string, Region> ranged_;
};

class SimulatedLocation final : public DeviceLocation {
 public:
  explicit SimulatedLocation(std::shared_ptr<platform::MainQueue> mainQueue)
      : mainQueue_(std::move(mainQueue)) {}

  std::shared_ptr<platform::LocationManager> makeLocationManager() override {
    auto manager = std::make_shared<Manager>(mainQueue_, surroundings_);
    const std::lock_guard lock(mutex_);
    std::erase_if(managers_, [](const auto& old) { return old.expired(); });
    managers_.push_back(manager);
    return manager;
  }

  bool happen(const BeaconEvent& event) override {
    surroundings_->note(event);
    std::vector<std::weak_ptr<Manager>> managers;
    {
      const std::lock_guard lock(mutex_);
      managers = managers_;
    }
    bool watched = false;
    for (const auto& weak : managers) {
      if (const auto manager = weak.lock()) watched = manager->happen(event) || watched;
    }
    return watched;
  }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Surroundings> surroundings_ = std::make_shared<Surroundings>();
  std::mutex mutex_;
  std::vector<std::weak_ptr<Manager>> managers_;
};

/// `text` in upper case when it is 32 hexadecimal digits in their five groups.
std::optional<std::string> uuidFrom(std::string_view text) {
  constexpr std::string_view form = "00000000-0000-0000-0000-000000000000";
  if (text.size() != form.size()) return std::nullopt;
  std::string uuid(text);
  for (std::size_t i = 0; i < form.size(); ++i) {
    if (uuid[i] >= 'a' && uuid[i] <= 'f') uuid[i] = static_cast<char>(uuid[i] - 'a' + 'A');
    const bool digit = (uuid[i] >= '0' && uuid[i] <= '9') || (uuid[i] >= 'A' && uuid[i] <= 'F');
    if (form[i] == '-' ? uuid[i] != '-' : !digit) return std::nullopt;
  }
  return uuid;
}

std::optional<BeaconEvent::Kind> kindFrom(std::string_view name) {
  using Kind = BeaconEvent::Kind;
  if (name == "enter") return Kind::enter;
  if (name == "exit") return Kind::exit;
  if (name == "inside") return Kind::inside;
  if (name == "range") return Kind::range;
  return std::nullopt;
}

}  // namespace

Result<BeaconEvent> parseBeaconEvent(std::string_view text) {
  const Error wrong{"\"" + std::string(text) +
                    "\" is no beacon event: write enter:UUID, exit:UUID, inside:UUID or range:UUID,UUID"};
  const auto colon = text.find(':');
  const auto kind = kindFrom(text.substr(0, colon));
  if (colon == std::string_view::npos || !kind) return wrong;
  BeaconEvent event{*kind, {}};
  for (auto rest = text.substr(colon + 1);;) {
    const auto comma = rest.find(',');
    auto uuid = uuidFrom(rest.substr(0, comma));
    if (!uuid) return wrong;
    event.proximityUUIDs.push_back(std::move(*uuid));
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (*kind != BeaconEvent::Kind::range && event.proximityUUIDs.size() != 1) return wrong;
  return event;
}

std::shared_ptr<DeviceLocation> makeLocation(std::shared_ptr<platform::MainQueue> mainQueue) {
  return std::make_shared<SimulatedLocation>(std::move(mainQueue));
}

}  // namespace VorselKelp::simulator
