#include "VorselKelpSimulator/DeviceInspection.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "device/DeviceDatabase.h"

namespace VorselKelp::simulator {
namespace {

/// Why nothing can be kept in the folder; empty when something can.
std::string folderProblem(const std::string& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) return path + ": " + std::strerror(errno);
  if (!S_ISDIR(found.st_mode)) return path + " is no folder";
  if (::access(path.c_str(), R_OK | W_OK | X_OK) == 0) return {};
  return path + " can't be written: " + std::strerror(errno);
}

/// Why the folder can't be made; empty when it can, as far as its parents tell.
std::string makingProblem(const std::string& path) {
  std::error_code ignored;
  auto parent = std::filesystem::absolute(path, ignored).parent_path();
  while (parent.has_relative_path() && !std::filesystem::exists(parent, ignored))
    parent = parent.parent_path();
  const auto problem = folderProblem(parent);
  return problem.empty() ? problem : path + " can't be made: " + problem;
}

void readApplications(Connection& connection, const std::string& application, DeviceHealth& health) {
  Statement rows(connection, "SELECT identifier, authorization, registered, token FROM application");
  while (rows.step()) {
    health.applications.push_back(rows.text(0));
    if (health.applications.back() != application) continue;
    health.authorization = static_cast<platform::AuthorizationStatus>(rows.integer(1));
    if (rows.integer(2) != 0 && !rows.isNull(3)) health.token = rows.text(3);
  }
}

void readDelivered(Connection& connection, const std::string& application, DeviceHealth& health) {
  Statement rows(connection, "SELECT userInfo FROM notification WHERE application = ?1 AND state = 1");
  rows.bind(1, application);
  while (rows.step()) {
    if (auto payload = JSONAny::decode(rows.text(0))) health.delivered.push_back(*std::move(payload));
  }
}

}  // namespace

DeviceHealth inspectDevice(const DeviceHome& home, const std::string& application) {
  DeviceHealth health;
  struct stat found {};
  const bool missing = ::stat(home.path().c_str(), &found) != 0 && errno == ENOENT;
  health.problem = missing ? makingProblem(home.path()) : folderProblem(home.path());
  if (missing) return health;
  // An empty file has been made, and not yet filled.
  health.exists = ::stat(home.database().c_str(), &found) == 0 && found.st_size > 0;
  if (!health.exists) return health;
  DeviceDatabase database(home.database());
  const auto read = database.use([&](Connection& connection) {
    readApplications(connection, application, health);
    readDelivered(connection, application, health);
  });
  if (!read && health.problem.empty()) health.problem = read.error().description;
  return health;
}

}  // namespace VorselKelp::simulator
