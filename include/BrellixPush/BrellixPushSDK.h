#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "BrellixPush/BrellixPushSDKBuilder.h"
#include "BrellixPush/BrellixPushSDKConfig.h"
#include "BrellixPush/BrellixPushSDKDelegate.h"
#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/VorselKellp.h"

namespace BrellixPush {

/// The publisher's entry: forwards to the core (VorselKellp, whose install() comes first), checks the
/// application group, and reports to the publisher's event endpoint whether users were asked for the
/// permission and what they answered. Threads and errors are those of the core's operation of the same name.
class VORSELKELP_API BrellixPushSDK {
 public:
  BrellixPushSDK() = delete;

  /// Main thread, in the application.
  static void initialize(const std::shared_ptr<BrellixPushSDKConfig>& config);
  /// Names the publisher in the events reported from now on.
  static void initialize(const std::string& publisherId, const std::string& source);

  /// Held weakly.
  static void setBrellixDelegate(std::weak_ptr<BrellixPushSDKDelegate> delegate);
  [[nodiscard]] static std::shared_ptr<BrellixPushSDKDelegate> brellixDelegate();

  /// Names the application group; blanks alone, and a group that the device does not know, are ignored.
  static void setValueFor(const std::string& appGroupId);

  static void registerDeviceToken(std::span<const std::uint8_t> deviceToken);
  /// Both report to the publisher that the user was asked, and what the user decided: each at most once per
  /// installation.
  static void askForNotificationsPermission();
  static void askForNotificationPermissionWith(
      const std::shared_ptr<VorselKelp::ui::ViewController>& controller);

  static void pushTrackOpen(bool handle, const VorselKelp::platform::NotificationResponse& response,
                            std::function<void(std::optional<std::string>)> completion);
  static std::optional<std::string> didReceiveNotification(
      const VorselKelp::platform::NotificationRequest& request,
      std::shared_ptr<VorselKelp::platform::NotificationContent> best, VorselKelp::ContentHandler completion);
  static void notificationBuilderWillTerminate(
      const VorselKelp::platform::UserInfo& userInfo,
      std::shared_ptr<VorselKelp::platform::NotificationContent> best, VorselKelp::ContentHandler completion);

  /// For the notification-content extension.
  [[nodiscard]] static VorselKelp::ui::Size getPreferedContentSize(
      const VorselKelp::platform::DeliveredNotification& notification);

  static void decreseNotificationCount(
      const std::shared_ptr<VorselKelp::platform::NotificationContent>& forNotify);
  static void increseNotificationCount(
      const std::shared_ptr<VorselKelp::platform::NotificationContent>& forNotify);

  static void setUtm(const std::string& key, const std::string& value);
  static void removeUtm(const std::string& key);
  [[nodiscard]] static std::string getUtm(const std::string& key);
  static void track(const VorselKelp::JSONAny::Dictionary& parameters);
  static void sendTrack(VorselKelp::TrackCompletion completion);
  [[nodiscard]] static std::map<std::string, std::string> getTrack();
  [[nodiscard]] static std::string getTrackFor(const std::string& key);
  static void removeTrack();
  static void removeTrackFor(const std::string& key);
};

}  // namespace BrellixPush
