#pragma once

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelpSystem/NotificationStore.h"

namespace VorselKelp::simulator {

class DeviceFile;
class DeviceHome;

/// What a sender's token is worth to one application of a device.
struct TokenStanding {
  bool registered = false;  ///< pushes to it reach the application
  /// Since when none do, because the application was unregistered or uninstalled: seconds since 1970 on the
  /// machine's clock, which is the senders' too. Absent for a token that the device does not know.
  std::optional<double> gone{};
};

/// One simulated device as it stands towards one application: what it keeps of its notifications, a token,
/// a clock that can be moved, and whether it is off. These have a file of their own below the device's home,
/// which extensions need not open a database for. Threads, processes and errors are as in the notification
/// store.
class VORSELKELP_API SimulatedDevice : public system::NotificationStore {
 public:
  /// Touches no file.
  SimulatedDevice(const DeviceHome& home, std::string application);

  /// Registers the application and answers its token: 32 bytes, made at the first registration and kept until
  /// the application is uninstalled.
  Result<std::string> registerForRemoteNotifications();
  void unregisterForRemoteNotifications();
  /// The token while the application is registered.
  std::optional<std::string> remoteToken();
  Result<TokenStanding> standingOf(const std::string& token);
  /// The application is gone: its token, and all that is kept of its notifications.
  Status forget();

  /// Pushes do not reach a device that is off; Arrivals keeps them.
  Result<bool> isOff();
  Status setOff(bool off);

  /// Seconds that the device's clock is ahead of the machine's. Every process sees at once when it is moved.
  double clockOffset();
  /// Moves the clock on and delivers what is due then.
  Status advanceClock(double seconds);

 private:
  SimulatedDevice(const DeviceHome& home, std::string application, const std::shared_ptr<DeviceFile>& file);

  const std::string application_;
  const std::shared_ptr<DeviceFile> file_;
};

}  // namespace VorselKelp::simulator
