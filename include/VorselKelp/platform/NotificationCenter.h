#pragma once

#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::platform {

/// The user's decision, with the system's numbers. A system may know further ones.
enum class AuthorizationStatus : int {
  notDetermined = 0,
  denied = 1,
  authorized = 2,
  provisional = 3,
  ephemeral = 4,
};

struct NotificationSettings {
  AuthorizationStatus authorizationStatus = AuthorizationStatus::notDetermined;
};

/// What a permission request asks for; options are added up.
enum AuthorizationOption : unsigned {
  authorizeBadge = 1,
  authorizeSound = 2,
  authorizeAlert = 4,
};

/// The device's notification centre, as this application sees it. Operations may be called from any thread.
/// Answers come exactly once, on a thread of the platform's choosing, possibly before the call returns.
class NotificationCenter {
 public:
  virtual ~NotificationCenter() = default;

  /// Asks the user, the first time; afterwards answers with what the user decided then. `granted` is false,
  /// with an error, when the system can't ask.
  virtual void requestAuthorization(unsigned options,
                                    UniqueFunction<void(bool granted, std::optional<Error>)> answer) = 0;

  virtual void getNotificationSettings(UniqueFunction<void(NotificationSettings)> answer) = 0;

  /// All registered categories, in no particular order, each identifier once.
  virtual void getNotificationCategories(UniqueFunction<void(std::vector<NotificationCategory>)> answer) = 0;
  /// Replaces the whole set.
  virtual void setNotificationCategories(std::vector<NotificationCategory> categories) = 0;

  /// Schedules a notification, or delivers it at once when it has no trigger. One of the same identifier,
  /// pending or delivered, is replaced.
  virtual void add(NotificationRequest request) = 0;
  /// Identifiers that are not there are ignored.
  virtual void removePendingNotificationRequests(const std::vector<std::string>& identifiers) = 0;
  virtual void removeDeliveredNotifications(const std::vector<std::string>& identifiers) = 0;
};

}  // namespace VorselKelp::platform
