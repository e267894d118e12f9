#include "VorselKelpSimulator/Installation.h"

#include <filesystem>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/SafeName.h"
#include "VorselKelpSimulator/Arrivals.h"
#include "VorselKelpSimulator/SimulatedDevice.h"

namespace VorselKelp::simulator {
namespace {

namespace fs = std::filesystem;

constexpr ProcessKind kinds[] = {ProcessKind::application, ProcessKind::serviceExtension,
                                 ProcessKind::contentExtension};

Status removeFolder(const std::string& path) {
  std::error_code error;
  fs::remove_all(path, error);
  if (error) return Error{"Cannot remove " + path + ": " + error.message(), error.value()};
  return Done{};
}

}  // namespace

Status uninstall(const DeviceHome& home, const Manifest& manifest) {
  const auto& application = manifest.bundleIdentifier;
  if (const auto forgotten = SimulatedDevice(home, application).forget(); !forgotten) return forgotten;
  if (const auto cleared = Arrivals(home, application).clear(); !cleared) return cleared;
  for (const auto kind : kinds) {
    if (const auto removed = removeFolder(home.container(manifest, kind)); !removed) return removed;
  }
  std::error_code error;
  const auto applications = posix::parentOf(home.container(manifest, ProcessKind::application));
  if (fs::exists(applications, error) && !fs::is_empty(applications, error)) return Done{};
  for (const auto& group : manifest.groups) {
    if (const auto removed = removeFolder(home.groupContainers() + '/' + posix::safeName(group)); !removed)
      return removed;
  }
  return Done{};
}

}  // namespace VorselKelp::simulator
