#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::simulator {

class CategoryFile;
class DeviceDatabase;
struct Connection;
class NotificationShelf;
class DeviceHome;

/// A notification that the device holds.
struct HeldNotification {
  platform::NotificationRequest request;
  double due = 0;  ///< pending: device time at which it is delivered; otherwise the time at which it was
};

/// One simulated device as it stands towards one application, kept in a database below the device's home;
/// only the notification categories have a file of their own, which extensions need not open a database for.
/// Several processes may use one home at once; every operation is atomic and takes effect for all of them
/// when it returns. Any thread. When something can't be read or written, an operation that answers a
/// Result says so there; the others report it on standard error, once, and then find nothing or write
/// nothing.
class VORSELKELP_API SimulatedDevice {
 public:
  /// Touches no file: the database is opened (and made) by the first operation.
  SimulatedDevice(const DeviceHome& home, std::string application);
  ~SimulatedDevice();
  SimulatedDevice(const SimulatedDevice&) = delete;
  SimulatedDevice& operator=(const SimulatedDevice&) = delete;

  /// Opens the database; an error says why the home is of no use.
  Status open();

  platform::AuthorizationStatus authorization();
  void setAuthorization(platform::AuthorizationStatus status);

  /// Registers the application and answers its token: 32 bytes, made at the first registration and kept.
  Result<std::string> registerForRemoteNotifications();
  void unregisterForRemoteNotifications();
  /// The token while the application is registered.
  std::optional<std::string> remoteToken();

  std::vector<platform::NotificationCategory> categories();
  /// The buttons of one category; none when it is not registered.
  std::vector<platform::NotificationAction> actionsOf(const std::string& category);
  /// Removes some categories and writes others (new or changed) in one step; all others stay as they are.
  void changeCategories(const std::vector<std::string>& removed,
                        const std::vector<platform::NotificationCategory>& written);

  /// Delivers now, in place of a pending or delivered notification of the same identifier. The files of its
  /// attachments move into the device; a file that can't be taken over is left out. A badge is shown. Answers
  /// the notification as the device holds it; an error when it does not, and then its files are gone.
  Result<platform::NotificationRequest> deliver(platform::NotificationRequest request);
  /// Delivers when the trigger's time has come on the device's clock, and again each interval when it
  /// repeats. Refuses a time that is not above 0, and below 60 seconds for one that repeats; the files then
  /// stay where they are.
  Status schedule(platform::NotificationRequest request);
  void removePending(const std::vector<std::string>& identifiers);
  void removeDelivered(const std::vector<std::string>& identifiers);

  /// Oldest first. Pending notifications whose time has come are delivered before anything is listed.
  std::vector<HeldNotification> delivered();
  std::vector<HeldNotification> pending();

  /// The notification that a user's tap reaches: a delivered one, or one that was tapped before and of which
  /// nothing but the response is left (a second tap may be on its way while the first is handled).
  std::optional<platform::NotificationRequest> tappable(const std::string& identifier);
  /// The user has opened or dismissed it: it leaves the notification centre, with its files.
  void noteTapped(const std::string& identifier);

  std::int64_t badge();
  void setBadge(std::int64_t badge);

  /// Seconds that the device's clock is ahead of the machine's.
  double clockOffset();
  /// Moves the clock on and delivers what is due then.
  Status advanceClock(double seconds);
  double now();

 private:
  Status changeShelf(platform::FunctionRef<void(Connection&)> work);
  void changeOrReport(platform::FunctionRef<void(Connection&)> work);
  void reportCategories(const Status& status);
  void use(platform::FunctionRef<void(Connection&)> work);
  void transact(platform::FunctionRef<void(Connection&)> work);

  std::string application_;
  std::unique_ptr<DeviceDatabase> database_;
  std::unique_ptr<CategoryFile> categories_;
  std::unique_ptr<NotificationShelf> shelf_;
};

}  // namespace VorselKelp::simulator
