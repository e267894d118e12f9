#include "VorselKelpSimulator/DeviceInspection.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "VorselKelpSystem/StoreInspection.h"
#include "device/DeviceFile.h"

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

void readRegistrations(const DeviceFile::Contents& contents, const std::string& application,
                       DeviceHealth& health) {
  health.off = contents.off;
  for (const auto& [identifier, registration] : contents.registrations) {
    if (registration.token.empty()) continue;  // uninstalled
    const auto known = std::find(health.applications.begin(), health.applications.end(), identifier);
    if (known == health.applications.end()) health.applications.push_back(identifier);
    if (identifier == application && registration.registered) health.token = registration.token;
  }
}

}  // namespace

DeviceHealth inspectDevice(const DeviceHome& home, const std::string& application) {
  DeviceHealth health;
  struct stat found {};
  const bool missing = ::stat(home.path().c_str(), &found) != 0 && errno == ENOENT;
  health.problem = missing ? makingProblem(home.path()) : folderProblem(home.path());
  if (missing) return health;
  auto kept = system::inspectNotificationStore(home.path(), application);
  health.exists = kept.exists || ::stat(home.deviceFile().c_str(), &found) == 0;
  health.applications = std::move(kept.applications);
  health.authorization = kept.authorization;
  health.delivered = std::move(kept.delivered);
  if (health.problem.empty()) health.problem = std::move(kept.problem);
  const auto contents = DeviceFile(home.deviceFile()).read();
  if (contents) readRegistrations(*contents, application, health);
  if (!contents && health.problem.empty()) health.problem = contents.error().description;
  return health;
}

}  // namespace VorselKelp::simulator
