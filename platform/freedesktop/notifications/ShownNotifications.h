#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::freedesktop {

struct ShownNotification {
  std::uint32_t number = 0;  ///< the server's
  platform::NotificationRequest request;
  platform::NotificationCategory category;
  std::string activationToken;  ///< of the action that follows; empty while there is none
  bool expired = false;         ///< its pop-up is gone; it may lie in the server's history
  bool resumed = false;         ///< an earlier process has shown it
};

/// The notifications that a server has, the oldest first: no more than `most`, for a server may never tell
/// that one has gone.
class ShownNotifications {
 public:
  static constexpr std::size_t most = 256;

  /// Whether the user may still do something with one: `history` says that one that has expired counts.
  [[nodiscard]] bool any(bool history) const;
  /// The server's number for it; 0 when it is not shown.
  [[nodiscard]] std::uint32_t numberOf(const std::string& identifier) const;
  [[nodiscard]] bool resumed(const std::string& identifier) const;
  [[nodiscard]] ShownNotification* find(std::uint32_t number);
  std::optional<ShownNotification> take(const std::string& identifier);
  /// In place of the one of the same identifier. Answers with the identifiers of those that went for it: the
  /// one that had its number before, the oldest of too many.
  [[nodiscard]] std::vector<std::string> put(ShownNotification shown);
  /// Forgets all, and answers with their identifiers.
  std::vector<std::string> clear();

 private:
  std::vector<ShownNotification> shown_;
};

}  // namespace VorselKelp::freedesktop
