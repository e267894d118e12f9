#pragma once

#include <string>
#include <vector>

#include "VorselKelpSystem/NotificationStore.h"
#include "notifications/NotificationDatabase.h"

namespace VorselKelp::system {

/// The rows of one application's responses that nobody has taken yet. Every operation must run inside a
/// transaction of the database.
class ResponseShelf {
 public:
  explicit ResponseShelf(std::string application) : application_(std::move(application)) {}

  /// False when the notification is not there. A response keeps what the notification said, for that may go
  /// before the response is taken; its files stay the notification's.
  [[nodiscard]] bool put(Connection& database, const std::string& identifier, const std::string& action,
                         const std::optional<std::string>& text) const;
  /// All of them, oldest first, or the one of that notification and action.
  std::vector<KeptResponse> take(Connection& database) const;
  std::optional<KeptResponse> take(Connection& database, const std::string& identifier,
                                   const std::string& action) const;

 private:
  const std::string application_;
};

}  // namespace VorselKelp::system
