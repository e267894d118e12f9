#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VorselKelp/platform/LocationManager.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// Times until which beacons are quiet, in seconds since 1970 by upper-case proximity UUID: one table for all
/// managers of a core, mirrored in the store. Any thread.
class QuietPeriods {
 public:
  explicit QuietPeriods(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// Starts a new quiet period for each beacon in turn, up to the first that is still quiet.
  void ranged(const std::vector<platform::Beacon>& beacons);

 private:
  void store();

  std::shared_ptr<CoreContext> context_;
  std::mutex mutex_;
  std::map<std::string, double> quietUntil_;
};

/// Watches the two fixed beacon regions and tells the user, one second later, of entering, leaving and being
/// inside one. Watches for as long as it lives. Its events come on the main thread.
class VorselBeaconManager : public platform::LocationManagerDelegate,
                            public std::enable_shared_from_this<VorselBeaconManager> {
 public:
  /// Makes a manager that watches. Any thread.
  static std::shared_ptr<VorselBeaconManager> start(std::shared_ptr<CoreContext> context,
                                                    std::shared_ptr<QuietPeriods> quietPeriods);

  VorselBeaconManager(std::shared_ptr<CoreContext> context, std::shared_ptr<QuietPeriods> quietPeriods);
  ~VorselBeaconManager() override;

  void didEnterRegion(const platform::Region& region) override;
  void didExitRegion(const platform::Region& region) override;
  void didDetermineState(platform::RegionState state, const platform::Region& region) override;
  void didRangeBeacons(const std::vector<platform::Beacon>& beacons, const platform::Region& region) override;

 private:
  void watch();
  void notify(const std::string& body);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<QuietPeriods> quietPeriods_;
  std::shared_ptr<platform::LocationManager> locationManager_;
  std::int64_t notifCounter_ = 1;
};

}  // namespace VorselKelp
