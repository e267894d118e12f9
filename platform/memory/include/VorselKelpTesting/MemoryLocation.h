#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/LocationManager.h"

namespace VorselKelp::testing_platform {

/// Location services whose user walks where the test says. Events reach every living manager that asked for
/// them, on the calling thread: call these on the main thread. Thread-safe otherwise.
class VORSELKELP_API MemoryLocation final : public platform::LocationServices {
 public:
  std::shared_ptr<platform::LocationManager> makeLocationManager() override;

  /// Into, out of, or known to be in the regions of this proximity UUID that are being monitored.
  void enter(const std::string& proximityUUID);
  void leave(const std::string& proximityUUID);
  void determine(platform::RegionState state, const std::string& proximityUUID);
  /// Beacons in range, for the first region that is being ranged.
  void range(const std::vector<platform::Beacon>& beacons);

  /// What the managers were asked, in order: "authorize", "monitor ID", "range ID", "state ID".
  [[nodiscard]] std::vector<std::string> asked() const;

 private:
  class Manager;
  struct Log {
    std::mutex mutex;
    std::vector<std::string> asked;
  };
  std::vector<std::shared_ptr<Manager>> managers();

  std::shared_ptr<Log> log_ = std::make_shared<Log>();
  std::mutex mutex_;
  std::vector<std::weak_ptr<Manager>> managers_;
};

}  // namespace VorselKelp::testing_platform
