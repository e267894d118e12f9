#include "location/VorselBeaconManager.h"

#include <limits>
#include <utility>

#include "base/FatalError.h"

namespace VorselKelp {
namespace {

constexpr double quietSeconds = 5.0;
constexpr double notificationDelay = 1;

const std::vector<platform::Region>& watchedRegions() {
  static const std::vector<platform::Region> regions{{"iBKS105-61", "00000000-0000-0000-0000-000000000330"},
                                                     {"iBKS105-94", "00000000-0000-0000-0000-000000000340"}};
  return regions;
}

}  // namespace

void QuietPeriods::ranged(const std::vector<platform::Beacon>& beacons) {
  const std::lock_guard lock(mutex_);
  auto stored = context_->storage.realMap(StorageKey::beaconInterval);
  if (!stored) {  // a fresh installation: the first callback only makes the table
    store();
    return;
  }
  quietUntil_ = *std::move(stored);
  for (const auto& beacon : beacons) {
    const double now = context_->services->clock->now();
    const auto found = quietUntil_.find(beacon.proximityUUID);
    if (found != quietUntil_.end() && now <= found->second) return;
    quietUntil_[beacon.proximityUUID] = now + quietSeconds;
    store();
  }
}

void QuietPeriods::store() {
  platform::DefaultsValue::Map map;
  for (const auto& [key, time] : quietUntil_) map.emplace(key, platform::DefaultsValue{time});
  context_->storage.set(StorageKey::beaconInterval, std::move(map));
  context_->storage.synchronize();
}

std::shared_ptr<VorselBeaconManager> VorselBeaconManager::start(std::shared_ptr<CoreContext> context,
                                                                std::shared_ptr<QuietPeriods> quietPeriods) {
  auto manager = std::make_shared<VorselBeaconManager>(std::move(context), std::move(quietPeriods));
  manager->watch();
  return manager;
}

VorselBeaconManager::VorselBeaconManager(std::shared_ptr<CoreContext> context,
                                         std::shared_ptr<QuietPeriods> quietPeriods)
    : context_(std::move(context)),
      quietPeriods_(std::move(quietPeriods)),
      locationManager_(context_->services->location->makeLocationManager()) {}

VorselBeaconManager::~VorselBeaconManager() {
  context_->print("VorselBeaconManager DEINITED");
}

void VorselBeaconManager::watch() {
  locationManager_->setDelegate(weak_from_this());
  locationManager_->requestAlwaysAuthorization();
  for (const auto& region : watchedRegions()) {
    locationManager_->startMonitoring(region);
    locationManager_->startRangingBeacons(region);
    locationManager_->requestState(region);
  }
}

void VorselBeaconManager::didEnterRegion(const platform::Region& region) {
  if (!region.proximityUUID) return;
  notify("ENTERED, " + region.identifier);
  if (const auto delegate = context_->state.delegate()) delegate->enteredBeaconRegionWith(region.identifier);
}

void VorselBeaconManager::didExitRegion(const platform::Region& region) {
  if (region.proximityUUID) notify("Exit , " + region.identifier);
}

void VorselBeaconManager::didDetermineState(platform::RegionState state, const platform::Region& region) {
  if (!region.proximityUUID || state != platform::RegionState::inside) return;
  locationManager_->startRangingBeacons(region);
  notify("INSIDE, " + region.identifier);
}

void VorselBeaconManager::didRangeBeacons(const std::vector<platform::Beacon>& beacons,
                                          const platform::Region&) {
  quietPeriods_->ranged(beacons);
}

void VorselBeaconManager::notify(const std::string& body) {
  platform::NotificationRequest request;
  request.content.title = "Beacon";
  request.content.body = body;
  request.identifier = "notification.id." + std::to_string(notifCounter_);
  if (notifCounter_ == std::numeric_limits<std::int64_t>::max())
    fatalError("the beacon notification counter overflows");
  ++notifCounter_;
  request.trigger = platform::TimeIntervalTrigger{notificationDelay, false};
  context_->services->notificationCenter->add(std::move(request));
}

}  // namespace VorselKelp
