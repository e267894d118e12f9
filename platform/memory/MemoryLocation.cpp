#include "VorselKelpTesting/MemoryLocation.h"

#include <utility>

namespace VorselKelp::testing_platform {

using platform::LocationManagerDelegate;
using platform::Region;

class MemoryLocation::Manager final : public platform::LocationManager {
 public:
  explicit Manager(std::shared_ptr<Log> log) : log_(std::move(log)) {}

  void setDelegate(std::weak_ptr<LocationManagerDelegate> delegate) override {
    const std::lock_guard lock(log_->mutex);
    delegate_ = std::move(delegate);
  }
  void requestAlwaysAuthorization() override { note("authorize"); }
  void startMonitoring(const Region& region) override {
    note("monitor " + region.identifier);
    const std::lock_guard lock(log_->mutex);
    monitored_.push_back(region);
  }
  void startRangingBeacons(const Region& region) override {
    note("range " + region.identifier);
    const std::lock_guard lock(log_->mutex);
    ranged_.push_back(region);
  }
  void requestState(const Region& region) override { note("state " + region.identifier); }

  [[nodiscard]] std::shared_ptr<LocationManagerDelegate> delegate() const {
    const std::lock_guard lock(log_->mutex);
    return delegate_.lock();
  }
  [[nodiscard]] std::vector<Region> monitored(const std::string& proximityUUID) const {
    const std::lock_guard lock(log_->mutex);
    std::vector<Region> found;
    for (const Region& region : monitored_) {
      if (region.proximityUUID == proximityUUID) found.push_back(region);
    }
    return found;
  }
  [[nodiscard]] std::vector<Region> ranged() const {
    const std::lock_guard lock(log_->mutex);
    return ranged_;
  }

 private:
  void note(std::string what) {
    const std::lock_guard lock(log_->mutex);
    log_->asked.push_back(std::move(what));
  }

  const std::shared_ptr<Log> log_;
  std::weak_ptr<LocationManagerDelegate> delegate_;
  std::vector<Region> monitored_;
  std::vector<Region> ranged_;
};

std::shared_ptr<platform::LocationManager> MemoryLocation::makeLocationManager() {
  auto manager = std::make_shared<Manager>(log_);
  const std::lock_guard lock(mutex_);
  managers_.push_back(manager);
  return manager;
}

std::vector<std::shared_ptr<MemoryLocation::Manager>> MemoryLocation::managers() {
  const std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<Manager>> living;
  for (const auto& weak : managers_) {
    if (auto manager = weak.lock()) living.push_back(std::move(manager));
  }
  return living;
}

void MemoryLocation::enter(const std::string& proximityUUID) {
  for (const auto& manager : managers()) {
    const auto delegate = manager->delegate();
    for (const Region& region : manager->monitored(proximityUUID)) {
      if (delegate) delegate->didEnterRegion(region);
    }
  }
}

void MemoryLocation::leave(const std::string& proximityUUID) {
  for (const auto& manager : managers()) {
    const auto delegate = manager->delegate();
    for (const Region& region : manager->monitored(proximityUUID)) {
      if (delegate) delegate->didExitRegion(region);
    }
  }
}

void MemoryLocation::determine(platform::RegionState state, const std::string& proximityUUID) {
  for (const auto& manager : managers()) {
    const auto delegate = manager->delegate();
    for (const Region& region : manager->monitored(proximityUUID)) {
      if (delegate) delegate->didDetermineState(state, region);
    }
  }
}

void MemoryLocation::range(const std::vector<platform::Beacon>& beacons) {
  for (const auto& manager : managers()) {
    const auto delegate = manager->delegate();
    const auto ranged = manager->ranged();
    if (delegate && !ranged.empty()) delegate->didRangeBeacons(beacons, ranged.front());
  }
}

std::vector<std::string> MemoryLocation::asked() const {
  const std::lock_guard lock(log_->mutex);
  return log_->asked;
}

}  // namespace VorselKelp::testing_platform
