#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"

namespace VorselKelp::platform {

/// A notification's user information: a dictionary, or the JSON bytes in which a remote notification arrived
/// (kept as they came, so that nothing is parsed twice). Copies share their contents, which never change.
class VORSELKELP_API UserInfo {
 public:
  UserInfo() : UserInfo(JSONAny::Dictionary{}) {}
  explicit UserInfo(JSONAny::Dictionary dictionary);
  /// Takes the bytes unseen: they may turn out to be no JSON, and then count as information that cannot be
  /// serialised.
  static UserInfo fromJSON(std::string bytes);

  /// The bytes, when it was made of bytes.
  [[nodiscard]] const std::string* bytes() const { return bytes_.get(); }
  /// The dictionary, when it was made of one.
  [[nodiscard]] const JSONAny::Dictionary* dictionary() const { return dictionary_.get(); }

 private:
  std::shared_ptr<const JSONAny::Dictionary> dictionary_;
  std::shared_ptr<const std::string> bytes_;
};

/// What a notification plays. `name` is a file name in the application's bundle; absent for the system's
/// sound.
struct NotificationSound {
  std::optional<std::string> name;
  static NotificationSound defaultSound() { return {}; }
  static NotificationSound named(std::string file) { return {std::move(file)}; }
  friend bool operator==(const NotificationSound&, const NotificationSound&) = default;
};

/// A file shown with a notification. The notification centre takes the file over when the notification is
/// delivered and removes it, with its folder when that is empty then, when the notification goes.
struct NotificationAttachment {
  std::string identifier;
  std::string path;
  friend bool operator==(const NotificationAttachment&, const NotificationAttachment&) = default;
};

/// What a notification shows. Shared between whoever prepares it; used on one thread at a time.
struct NotificationContent {
  std::string title;
  std::string subtitle;
  std::string body;
  std::optional<std::int64_t> badge;
  std::optional<NotificationSound> sound;  ///< absent: silent
  std::string categoryIdentifier;          ///< empty: none
  std::vector<NotificationAttachment> attachments;
  UserInfo userInfo;
};

/// When a local notification is due.
struct TimeIntervalTrigger {
  double seconds = 0;  ///< greater than 0; at least 60 when repeating
  bool repeats = false;
};

struct NotificationRequest {
  std::string identifier;
  NotificationContent content;
  /// Absent: at once, or a remote notification.
  std::optional<TimeIntervalTrigger> trigger;
};

/// What a button does besides reporting the tap: it looks dangerous, or it opens the application.
enum class NotificationActionOption { destructive = 2, foreground = 4 };

struct NotificationAction {
  std::string identifier;
  std::string title;
  NotificationActionOption option = NotificationActionOption::foreground;
  friend bool operator==(const NotificationAction&, const NotificationAction&) = default;
};

/// A set of buttons under a name. `customDismissAction`: the application also hears of a dismissal.
struct NotificationCategory {
  std::string identifier;
  std::vector<NotificationAction> actions;
  bool customDismissAction = false;
  friend bool operator==(const NotificationCategory&, const NotificationCategory&) = default;
};

inline constexpr std::string_view defaultActionIdentifier = "com.apple.UNNotificationDefaultActionIdentifier";
inline constexpr std::string_view dismissActionIdentifier = "com.apple.UNNotificationDismissActionIdentifier";

/// What the user did with a delivered notification.
struct NotificationResponse {
  NotificationRequest request;
  /// defaultActionIdentifier for a tap on the notification itself, else the button's identifier.
  std::string actionIdentifier;
};

}  // namespace VorselKelp::platform
