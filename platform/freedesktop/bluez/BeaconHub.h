#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/platform/LocationManager.h"
#include "VorselKelp/platform/MainQueue.h"
#include "bluez/BluezScanner.h"

namespace VorselKelp::freedesktop {

class BeaconManager;

/// What all location managers share: the adapter, the second's beat, and when which beacon was heard last.
/// On the main queue, where it says nothing else.
class BeaconHub : public std::enable_shared_from_this<BeaconHub> {
 public:
  BeaconHub(std::shared_ptr<platform::MainQueue> mainQueue, std::string busAddress);

  /// Any thread; safe before the manager is used.
  void post(platform::UniqueFunction<void()> work) { mainQueue_->async(std::move(work)); }

  /// Kept weakly. It hears of beacons and beats from now on.
  void join(const std::shared_ptr<BeaconManager>& manager);
  /// Whether a beacon of these was heard within the last 30 seconds.
  [[nodiscard]] bool present(const std::string& proximityUUID) const;
  [[nodiscard]] bool scanning() const { return scanner_ && scanner_->scanning(); }

 private:
  void seen(const platform::Beacon& beacon);
  void beat();
  void scheduleBeat();
  [[nodiscard]] std::vector<std::shared_ptr<BeaconManager>> managers();

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::string busAddress_;
  std::shared_ptr<BluezScanner> scanner_;  ///< while there are managers
  std::vector<std::weak_ptr<BeaconManager>> managers_;
  std::map<std::string, long> heard_;  ///< by proximity UUID, of watched regions only: the beat
  long beats_ = 0;                     ///< seconds; the wall clock may jump, this does not
};

}  // namespace VorselKelp::freedesktop
