#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/PushRecords.h"
#include "VorselKelp/VorselBuilder.h"
#include "VorselKelp/VorselConfig.h"
#include "VorselKelp/VorselKellpDelegate.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelp/ui/ViewController.h"

namespace VorselKelp {

/// Delivers a notification's content. Given by the system to the service extension; may be copied.
using ContentHandler = std::function<void(std::shared_ptr<platform::NotificationContent>)>;

/// Hears how a tracking event ended: the status when a response came, a word about the outcome, the
/// transport's error.
using TrackCompletion =
    std::function<void(std::optional<int>, std::optional<std::string>, std::optional<Error>)>;

/// The core's one entry. Install a platform first; any other call without one stops the process with a line
/// that says so. Unless said otherwise a call may be made on any thread (the main thread in practice),
/// returns at once, and reports failures on the console only.
class VORSELKELP_API VorselKellp {
 public:
  VorselKellp() = delete;

  // Set-up

  /// Makes the process's core on `platform`, in place of the one that was there. Work that the old one has
  /// under way ends on the old platform: reports that failed are counted in its store, a notification that is
  /// being prepared reaches its handler. A platform without one of its services stops the process.
  static void install(std::shared_ptr<platform::Platform> platform);
  /// Lets the process's core go: the end of a process that leaves in good order. Its stores are closed when
  /// the work that it has under way has ended. Does nothing when there is none.
  static void uninstall();

  /// Brings the core up: counts the session, writes the default endpoints until the installation is reported,
  /// and fetches the remote configuration; what follows (activity report, permission check) happens when that
  /// answers. A transport error leaves the core uninitialised for this launch. Main thread; blocks for the
  /// store alone.
  static void initialize(std::shared_ptr<VorselConfig> config);
  [[nodiscard]] static bool isInitialised();
  /// Runs `ready` once, on the main queue, as soon as the core is up: soon when it is already, never in a
  /// launch in which it does not come up.
  static void whenInitialised(std::function<void()> ready);
  /// For a platform that knows when there is a network: asks for the remote configuration again where no
  /// server could be asked, and then goes on as initialize() would have. Nothing else of the start is
  /// repeated. Does nothing while an answer is outstanding, and where there was one.
  static void repeatConfiguration();

  /// Held weakly.
  static void setVorselDelegate(std::weak_ptr<VorselKellpDelegate> delegate);
  [[nodiscard]] static std::shared_ptr<VorselKellpDelegate> vorselDelegate();

  /// Sets the application group whose store is used; without effect once the store was used.
  static void setValueFor(const std::string& appGroupId);
  /// Unregisters from remote notifications and forgets that the installation was reported. Main thread.
  static void clearInstallationData();
  /// Schedules the re-engagement notification anew with the stored interval; nothing when none is stored.
  static void updateScheduler();

  // Activity

  /// Adds an entry to the map that every activity and user report carries as "u". Both texts must be UTF-8:
  /// with one that is not, every later report goes out without a body, and sendTrack stops the process.
  static void setUserValue(const std::string& key, const std::string& value);
  /// Reports an event. A value that JSON has no form for, or a process in which no session was ever counted,
  /// is a programming error and stops the process.
  static void sendCustomEvent(const std::string& key, const JSONAny& value);
  /// Does nothing and never calls its completion.
  static void sendCustomTestTrack(const JSONAny& track,
                                  std::function<void(std::optional<std::string>)> completion);

  // Tracking parameters and UTM values. Before the core is initialised each of these writes a banner, does
  // nothing and answers nothing (texts: "Vorsel not initialized").

  /// Adds to the parameters that the next tracking event carries; values become text. Nothing while analytics
  /// is off.
  static void track(const JSONAny::Dictionary& parameters);
  /// Sends one event with the collected parameters and those of earlier accepted events, on which collected
  /// ones win. `completion` replaces the one of an earlier call. It hears each try: after a transport error
  /// the event is sent again every half second, and the tenth time is reported once more. With push off a
  /// banner is written and nothing sent.
  static void sendTrack(TrackCompletion completion);
  /// The collected parameters.
  [[nodiscard]] static std::map<std::string, std::string> getTrack();
  [[nodiscard]] static std::string getTrackFor(const std::string& key);
  /// Forgets all parameters, the stored ones too.
  static void removeTrack();
  static void removeTrackFor(const std::string& key);
  static void setUtm(const std::string& key, const std::string& value);
  static void removeUtm(const std::string& key);
  [[nodiscard]] static std::string getUtm(const std::string& key);

  // Re-engagement notification

  /// The title of the re-engagement notification.
  static void setNotification(const std::string& text);
  static void cancelScheduledNotifications();

  // Push: application

  /// Hands the device token over, from the application's registration callback. With push on, the permission
  /// is asked for and a changed token reported; the delegate hears of it. Stops the process when a changed
  /// token is to be reported and no session was ever counted.
  static void registerToken(std::span<const std::uint8_t> deviceToken);
  /// Shows the system's permission dialog when the user has not decided yet.
  static void askForNotificationsPermission();
  /// The same. When the remote configuration names a page of the publisher's, that page is presented over
  /// `controller` first, and the system asks only when the user agrees there. Does nothing when the user has
  /// decided. `controller` is held weakly: the page is not shown, and nobody asked, when it goes before the
  /// settings are known.
  static void askForNotificationPermissionWith(const std::shared_ptr<ui::ViewController>& controller);
  /// The user opened a notification or tapped a button. Click trackers go out. With `handle`, the URL stored
  /// for the action is opened: a web page in the in-app browser, any other through the delegate. Without,
  /// `completion` gets the URL. An action without a URL gives nothing to `completion` in either case. A
  /// notification that stored no URL at all, and push switched off, call nothing. Main thread.
  static void pushTrackOpen(bool handle, const platform::NotificationResponse& response,
                            std::function<void(std::optional<std::string>)> completion);

  /// Adds one to the count of unread notifications and shows it: on `forNotify` when given, else on the icon.
  static void addNotificationCount(const std::shared_ptr<platform::NotificationContent>& forNotify);
  /// Takes one off, below zero too; nothing while nothing was counted.
  static void decreseNotificationCount(const std::shared_ptr<platform::NotificationContent>& forNotify);
  static void setAppBadge(std::int64_t value);
  /// Hands over the geofences or the beacons of a silent administrative push; any other push calls nothing.
  static void didReciveAdministrativeNotificationWith(
      const platform::UserInfo& userInfo,
      std::function<void(std::optional<Geofences>, std::optional<Beacons>)> completion);

  // Push: notification-service extension

  /// Fits the notification out and hands it to `completion`, at once or when its image or its ad has come;
  /// never after notificationBuilderWillTerminate has handed it over. A notification that carries no single
  /// message of ours stops the process. Answers nothing. A message with neither a notification nor a usable
  /// ad endpoint is never handed over: the extension's time limit ends it. `best` is changed, and
  /// `completion` runs, on the calling thread or on the main queue: call this on the main thread. Blocks
  /// while the notification centre is asked for its categories, at most 5 seconds, and while another
  /// extension process does the same.
  static std::optional<std::string> didReceiveNotification(
      const platform::NotificationRequest& request, std::shared_ptr<platform::NotificationContent> best,
      ContentHandler completion);
  /// The extension's time is over: hands over what there is, when push is on. `best` is the object that
  /// didReceiveNotification was given: what is still on its way to it is told by that.
  static void notificationBuilderWillTerminate(const platform::UserInfo& userInfo,
                                               std::shared_ptr<platform::NotificationContent> best,
                                               ContentHandler completion);
  /// What the request carries, campaigns included; nothing when it can't be read, and then a line that says
  /// why unless it is no JSON object at all.
  [[nodiscard]] static std::optional<NotificationObject> getNotificationContent(
      const platform::NotificationRequest& request);

  // Push: notification-content extension

  /// How large the extension should make its area for this notification, in points. A campaign without a
  /// single message stops the process.
  [[nodiscard]] static ui::Size getPreferedContentSize(const platform::DeliveredNotification& notification);
};

}  // namespace VorselKelp
