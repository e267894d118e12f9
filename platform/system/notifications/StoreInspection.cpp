#include "VorselKelpSystem/StoreInspection.h"

#include <sys/stat.h>

#include "notifications/NotificationDatabase.h"

namespace VorselKelp::system {
namespace {

void readApplications(Connection& connection, const std::string& application,
                      NotificationStoreHealth& health) {
  Statement rows(connection, "SELECT identifier, authorization FROM application");
  while (rows.step()) {
    health.applications.push_back(rows.text(0));
    if (health.applications.back() == application)
      health.authorization = static_cast<platform::AuthorizationStatus>(rows.integer(1));
  }
}

void readDelivered(Connection& connection, const std::string& application, NotificationStoreHealth& health) {
  Statement rows(connection, "SELECT userInfo FROM notification WHERE application = ?1 AND state = 1");
  rows.bind(1, application);
  while (rows.step()) {
    if (auto payload = JSONAny::decode(rows.text(0))) health.delivered.push_back(*std::move(payload));
  }
}

}  // namespace

NotificationStoreHealth inspectNotificationStore(const std::string& folder, const std::string& application) {
  NotificationStoreHealth health;
  const auto path = folder + "/notifications.sqlite";
  struct stat found {};
  // An empty file has been made, and not yet filled.
  health.exists = ::stat(path.c_str(), &found) == 0 && found.st_size > 0;
  if (!health.exists) return health;
  const Patience patience;
  const DatabaseFile file(path, patience);
  const auto opened = file.look();
  if (!opened) {
    health.problem = opened.error().description;
    return health;
  }
  Connection connection{(*opened)->handle(), std::nullopt};
  readApplications(connection, application, health);
  readDelivered(connection, application, health);
  if (connection.failure)
    health.problem = file.unusable(connection.failure->description, connection.failure->code).description;
  return health;
}

}  // namespace VorselKelp::system
