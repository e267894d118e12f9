#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/platform/LocationManager.h"
#include "bluez/BeaconHub.h"

namespace VorselKelp::freedesktop {

/// One location manager. Its operations come from any thread and act on the main queue; the rest is called
/// there.
class BeaconManager final : public platform::LocationManager,
                            public std::enable_shared_from_this<BeaconManager> {
 public:
  explicit BeaconManager(std::shared_ptr<BeaconHub> hub) : hub_(std::move(hub)) {}

  void setDelegate(std::weak_ptr<platform::LocationManagerDelegate> delegate) override;
  /// Whoever may use the system's bus may listen to beacons: there is nobody to ask.
  void requestAlwaysAuthorization() override {}
  void startMonitoring(const platform::Region& region) override;
  void startRangingBeacons(const platform::Region& region) override;
  void requestState(const platform::Region& region) override;

  [[nodiscard]] bool watches(const std::string& proximityUUID) const;
  void seen(const platform::Beacon& beacon);
  /// A second has passed.
  void beat();

 private:
  struct Monitored {
    platform::Region region;
    bool inside = false;
  };
  struct Ranged {
    platform::Region region;
    std::vector<platform::Beacon> beacons;  ///< of this second, each once
  };
  struct Asked {
    platform::Region region;
    int beats = 0;
  };

  /// Notes that the device is inside; the regions where it was not before.
  std::vector<platform::Region> arrived(const std::string& proximityUUID);
  void later(platform::UniqueFunction<void(BeaconManager&)> work);
  void join();
  void determine(platform::RegionState state, const platform::Region& region);
  void note(Ranged& ranged, const platform::Beacon& beacon) const;

  const std::shared_ptr<BeaconHub> hub_;
  bool joined_ = false;
  std::weak_ptr<platform::LocationManagerDelegate> delegate_;
  std::map<std::string, Monitored> monitored_;  ///< by the region's identifier, like the next two
  std::map<std::string, Ranged> ranged_;
  std::map<std::string, Asked> asked_;
};

}  // namespace VorselKelp::freedesktop
